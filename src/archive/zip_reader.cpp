#include "archive/zip_reader.hpp"

#include <algorithm>

namespace vantorium {

namespace {

ZipReader::Step stepOf(int code) {
  if (code == UNZ_OK) return ZipReader::Step::entry;
  return code == UNZ_END_OF_LIST_OF_FILE ? ZipReader::Step::end : ZipReader::Step::damaged;
}

}  // namespace

ZipReader::ZipReader(ArchiveSource& source) {
  zlib_filefunc64_def functions = source.functions();
  file_ = unzOpen2_64("", &functions);
}

ZipReader::~ZipReader() {
  if (file_ != nullptr) unzClose(file_);
}

// minizip itself refuses a null handle.
ZipReader::Step ZipReader::first() { return stepOf(unzGoToFirstFile(file_)); }

ZipReader::Step ZipReader::next() { return stepOf(unzGoToNextFile(file_)); }

std::optional<ZipEntry> ZipReader::entry(std::size_t longestName) const {
  unz_file_info64 info{};
  std::string name(longestName, '\0');
  const int code = unzGetCurrentFileInfo64(file_, &info, name.data(), name.size(), nullptr, 0, nullptr, 0);
  if (code != UNZ_OK) return std::nullopt;
  name.resize(std::min<std::size_t>(name.size(), info.size_filename));
  return ZipEntry{.name = std::move(name),
                  .nameBytes = info.size_filename,
                  .compressedBytes = info.compressed_size,
                  .bytes = info.uncompressed_size,
                  .attributes = static_cast<std::uint32_t>(info.external_fa),
                  .isEncrypted = (info.flag & 1U) != 0};
}

bool ZipReader::openEntry(const ZipEntry& entry, const std::optional<std::string>& password) {
  if (!entry.isEncrypted || !password) return unzOpenCurrentFile(file_) == UNZ_OK;
  return unzOpenCurrentFilePassword(file_, password->c_str()) == UNZ_OK;
}

int ZipReader::read(std::span<char> bytes) {
  return unzReadCurrentFile(file_, bytes.data(), static_cast<unsigned>(bytes.size()));
}

ZipReader::Close ZipReader::closeEntry() {
  const int code = unzCloseCurrentFile(file_);
  if (code == UNZ_OK) return Close::sound;
  return code == UNZ_CRCERROR ? Close::wrongChecksum : Close::damaged;
}

}  // namespace vantorium
