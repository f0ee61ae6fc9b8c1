#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "archive/archive_source.hpp"
#include "archive/confined_folder.hpp"
#include "archive/entry_path.hpp"
#include "archive/zip.hpp"
#include "archive/zip_reader.hpp"
#include "platform/foundation/files.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t ownerMayRead = 0400;
constexpr mode_t ownerMayAll = 0700;

using Failure = std::optional<ZipError>;

/// Neither a file nor a folder: a link, a device, a pipe or a socket, of an archive that was made on Unix.
bool isSpecial(const ZipEntry& entry) {
  const mode_t kind = (entry.attributes >> 16U) & S_IFMT;
  return kind != 0 && kind != S_IFREG && kind != S_IFDIR;
}

std::string reason(int code) {
  if (code == ETXTBSY) return "it would replace the archive itself";
  if (code == ENOTDIR || code == ELOOP) return "a file or a symbolic link stands where a folder is needed";
  if (code == ENOSPC || code == EDQUOT || code == EFBIG)
    return std::generic_category().message(code) + "; free some space and try again";
  return std::generic_category().message(code);
}

/// One run of `Zip::unzipFile`, with the reader at the first entry.
class Unzipping {
 public:
  Unzipping(fs::path destination, bool overwrite, const std::optional<std::string>& password,
            const ZipLimits& limits, const Zip::IsCancelled& isCancelled, const ArchiveSource& source,
            ZipReader& reader)
      : destination_(std::move(destination)),
        existing_(overwrite ? ConfinedFolder::Existing::replace : ConfinedFolder::Existing::keep),
        password_(password),
        limits_(limits),
        isCancelled_(isCancelled),
        source_(source),
        reader_(reader),
        folder_(destination_) {}

  Failure run(const Zip::Progress& progress, const Zip::FileOutputHandler& fileOutputHandler);

 private:
  Failure extract(const ZipEntry& entry);
  const char* refusal(const ZipEntry& entry);
  Failure makeFolder(const ZipEntry& entry);
  Failure makeFile(const ZipEntry& entry);
  Failure copy(const ZipEntry& entry, const ConfinedFile& file);
  Failure close(const ZipEntry& entry, std::uint64_t written);
  Failure checkTotal(const ZipEntry& entry) const;
  Failure checkFolders(const ZipEntry& entry) const;
  Failure unreadable(const ZipEntry& entry) const;
  template <typename Set>
  void setPermissions(const ZipEntry& entry, mode_t always, const Set& set);

  static Failure fail(std::string detail) { return ZipError(ZipError::unzipFail, std::move(detail)); }
  static Failure fail(const ZipEntry& entry, std::string_view what) {
    return fail(fmt::format("Entry {} {}.", shownName(entry.name), what));
  }

  fs::path destination_;
  ConfinedFolder::Existing existing_;
  const std::optional<std::string>& password_;
  const ZipLimits& limits_;
  const Zip::IsCancelled& isCancelled_;
  const ArchiveSource& source_;
  ZipReader& reader_;
  ConfinedFolder folder_;
  EntryPath path_;  ///< of the entry at hand
  std::uint64_t total_ = 0;
};

Failure Unzipping::run(const Zip::Progress& progress, const Zip::FileOutputHandler& fileOutputHandler) {
  if (!folder_.isOpen())
    return fail(fmt::format("The destination cannot be written to: {}.", reason(folder_.error())));
  std::uint64_t position = 0;
  auto step = ZipReader::Step::entry;
  for (std::uint64_t count = 1; step == ZipReader::Step::entry; ++count) {
    if (isCancelled_ && isCancelled_()) return fail("It was given up.");
    if (count > limits_.entries) return fail(fmt::format("It has more than {} entries.", limits_.entries));
    const auto entry = reader_.entry(limits_.nameBytes);
    if (!entry) return fail("Its table of contents is damaged.");
    if (auto failure = extract(*entry)) return failure;
    // Claims that are too large stop at the end.
    position += std::min(entry->compressedBytes, source_.size() - position);
    step = reader_.next();
    if (progress) progress(static_cast<double>(position) / static_cast<double>(source_.size()));
    if (fileOutputHandler) fileOutputHandler(destination_ / path_.relative());
  }
  if (step == ZipReader::Step::damaged) return fail("Its table of contents is damaged.");
  if (progress) progress(1.0);
  return std::nullopt;
}

/// Why nothing of the entry may be written, or null. Reads its path.
const char* Unzipping::refusal(const ZipEntry& entry) {
  if (entry.nameBytes > limits_.nameBytes) return "has a name that is too long";
  if (isSpecial(entry)) return "is a symbolic link or a device";
  const char* flaw = nullptr;
  auto path = readEntryPath(entry.name, flaw);
  if (!path) return flaw;
  path_ = std::move(*path);
  return nullptr;
}

Failure Unzipping::extract(const ZipEntry& entry) {
  if (const char* const flaw = refusal(entry)) return fail(entry, flaw);
  if (const char* const flaw = reader_.openEntry(entry, password_)) return fail(entry, flaw);
  return path_.isFolder() ? makeFolder(entry) : makeFile(entry);
}

/// The bits of the archive, if its owner may read the file then. A failure ends nothing.
template <typename Set>
void Unzipping::setPermissions(const ZipEntry& entry, mode_t always, const Set& set) {
  const mode_t mode = (entry.attributes >> 16U) & permissionBits;
  if (mode < ownerMayRead) return;
  if (const int code = set(mode | always); code != 0) {
    std::string path = (destination_ / path_.relative()).string();
    // Names may hold what a terminal would obey.
    std::ranges::replace_if(
        path, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
    const auto text = fmt::format("Failed to set permissions to file {}, error: {}\n", path, reason(code));
    std::fputs(text.c_str(), stdout);
  }
}

Failure Unzipping::makeFolder(const ZipEntry& entry) {
  // A failure is that of the first file in it.
  const bool made = folder_.makeFolder(path_.folder);
  if (auto failure = checkFolders(entry)) return failure;
  if (auto failure = close(entry, 0)) return failure;
  // Whatever the archive says, the folder can be filled, and removed again.
  if (made)
    setPermissions(entry, ownerMayAll, [this](mode_t mode) { return folder_.setFolderPermissions(mode); });
  return std::nullopt;
}

Failure Unzipping::makeFile(const ZipEntry& entry) {
  ConfinedFile file = folder_.makeFile(path_, existing_, source_);
  if (auto failure = checkFolders(entry)) return failure;
  if (!file.isOpen()) {
    const int code = folder_.error();
    if (code == EEXIST) {
      reader_.closeEntry();  // what was kept instead need not match
      return std::nullopt;
    }
    if (entry.bytes > 0) return fail(entry, fmt::format("cannot be written: {}", reason(code)));
    return close(entry, 0);
  }
  if (auto failure = copy(entry, file)) return failure;
  setPermissions(entry, 0, [&file](mode_t mode) { return file.setPermissions(mode); });
  if (const int code = file.keep(); code != 0)
    return fail(entry, fmt::format("cannot be written: {}", reason(code)));
  return std::nullopt;
}

Failure Unzipping::copy(const ZipEntry& entry, const ConfinedFile& file) {
  std::uint64_t written = 0;
  auto bytes = reader_.read();
  while (bytes && !bytes->empty() && written <= entry.bytes) {
    if (isCancelled_ && isCancelled_()) return fail("It was given up.");
    total_ += bytes->size();
    if (auto failure = checkTotal(entry)) return failure;
    if (const int code = file.append(*bytes); code != 0)
      return fail(entry, fmt::format("cannot be written: {}", reason(code)));
    written += bytes->size();
    bytes = reader_.read();
  }
  return bytes ? close(entry, written) : unreadable(entry);
}

Failure Unzipping::unreadable(const ZipEntry& entry) const {
  if (reader_.isExhausted())
    return fail(entry,
                fmt::format("has data that takes more than {} readings of the archive", limits_.readRatio));
  return fail(entry, entry.isEncrypted ? "is damaged, or the password is wrong" : "is damaged or cut off");
}

Failure Unzipping::checkFolders(const ZipEntry& entry) const {
  if (folder_.foldersMade() <= limits_.folders) return std::nullopt;
  return fail(entry, fmt::format("takes the archive over {} folders", limits_.folders));
}

Failure Unzipping::checkTotal(const ZipEntry& entry) const {
  if (total_ > limits_.totalBytes)
    return fail(entry, fmt::format("takes the archive over {} bytes", limits_.totalBytes));
  if (total_ > limits_.ratioFreeBytes && total_ / limits_.compressionRatio > source_.size())
    return fail(entry, fmt::format("takes the archive over {} times its size", limits_.compressionRatio));
  return std::nullopt;
}

Failure Unzipping::close(const ZipEntry& entry, std::uint64_t written) {
  reader_.closeEntry();
  if (written != entry.bytes)
    return fail(entry, fmt::format("has {}{} bytes where {} were announced",
                                   written > entry.bytes ? "at least " : "", written, entry.bytes));
  if (reader_.checksum() != entry.checksum)
    return fail(entry, entry.isEncrypted ? "does not match its checksum, or the password is wrong"
                                         : "does not match its checksum");
  return std::nullopt;
}

bool isASCII(const std::string& text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 128; });
}

Failure notFound(const fs::path& archive) {
  const std::string dotted = archive.extension().string();
  const std::string extension = dotted.empty() ? "" : dotted.substr(1);
  std::error_code failure;
  if (!fs::exists(archive, failure))
    return ZipError(ZipError::fileNotFound, fmt::format("There is none at {}.", archive.string()));
  if (Zip::isValidFileExtension(extension)) return std::nullopt;
  return ZipError(ZipError::fileNotFound, fmt::format("The extension \"{}\" of {} is none of an archive.",
                                                      extension, archive.filename().string()));
}

}  // namespace

std::optional<ZipError> Zip::unzipFile(const fs::path& archive, const fs::path& destination, bool overwrite,
                                       const std::optional<std::string>& password, const Progress& progress,
                                       const FileOutputHandler& fileOutputHandler, const ZipLimits& limits,
                                       const IsCancelled& isCancelled) {
  if (auto failure = notFound(archive)) return failure;
  const auto explained = [&archive](const std::string& detail) {
    return ZipError(ZipError::unzipFail, fmt::format("{}: {}", archive.filename().string(), detail));
  };
  if (password && !isASCII(*password)) return explained("The password must be ASCII.");
  const auto source = std::make_unique<ArchiveSource>(archive);  // its windows are large for a stack
  if (!source->isOpen()) return explained(fmt::format("It cannot be opened: {}.", reason(source->error())));
  ZipReader reader(*source, source->size() * limits.readRatio);
  if (reader.first() != ZipReader::Step::entry)
    return explained("It is no zip archive, is damaged, or has no entries.");
  const auto failure = Unzipping(destination, overwrite, password, limits, isCancelled, *source, reader)
                           .run(progress, fileOutputHandler);
  if (failure) return explained(failure->detail());
  return std::nullopt;
}

}  // namespace vantorium
