#include "archive/zip_table.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

namespace vantorium {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t endRecordBytes = 22;
constexpr std::size_t longestComment = 0xFFFF;
constexpr std::size_t locatorBytes = 20;
constexpr std::size_t largeEndRecordBytes = 56;
constexpr std::size_t entryBytes = 46;
constexpr std::uint64_t isInExtraField = 0xFFFFFFFF;
constexpr unsigned encrypted = 1;
constexpr unsigned checksumFollows = 8;

/// Sizes and offset that the entry's extra field has in 64 bits; those that it does not have stay.
void readLargeNumbers(ZipEntry& entry, std::string_view extra) {
  while (extra.size() >= 4) {
    const auto kind = littleEndian(extra, 0, 2);
    std::string_view field = extra.substr(4, littleEndian(extra, 2, 2));
    extra.remove_prefix(4 + field.size());
    if (kind != 1) continue;
    for (std::uint64_t* const number : {&entry.bytes, &entry.compressedBytes, &entry.position}) {
      if (*number != isInExtraField || field.size() < 8) continue;
      *number = littleEndian(field, 0, 8);
      field.remove_prefix(8);
    }
    return;
  }
}

ZipEntry readEntry(std::string_view record, std::string_view name) {
  const auto flags = littleEndian(record, 8, 2);
  const auto checksum = static_cast<std::uint32_t>(littleEndian(record, 16, 4));
  // Whoever did not know the checksum yet took the time instead.
  const auto check = (flags & checksumFollows) != 0 ? littleEndian(record, 13, 1) : checksum >> 24U;
  return {.name = std::string(name),
          .nameBytes = static_cast<std::size_t>(littleEndian(record, 28, 2)),
          .compressedBytes = littleEndian(record, 20, 4),
          .bytes = littleEndian(record, 24, 4),
          .position = littleEndian(record, 42, 4),
          .checksum = checksum,
          .attributes = static_cast<std::uint32_t>(littleEndian(record, 38, 4)),
          .method = static_cast<std::uint16_t>(littleEndian(record, 10, 2)),
          .isEncrypted = (flags & encrypted) != 0,
          .passwordCheck = static_cast<unsigned char>(check)};
}

}  // namespace

std::uint64_t littleEndian(std::string_view bytes, std::size_t at, std::size_t size) {
  if (at > bytes.size() || bytes.size() - at < size) return 0;
  std::uint64_t value = 0;
  for (std::size_t byte = at + size; byte > at; --byte)
    value = value << 8U | static_cast<unsigned char>(bytes[byte - 1]);
  return value;
}

ZipTable::ZipTable(const ArchiveSource& source) : window_(source), fileSize_(source.size()) {
  if (!find()) fail("It is no zip archive, is damaged, or has no entries.");
}

void ZipTable::fail(std::string_view what) {
  rest_ = 0;
  flaw_ = window_.error() == 0
              ? std::string(what)
              : fmt::format("It cannot be read: {}.", std::generic_category().message(window_.error()));
}

bool ZipTable::find() {
  const auto end = findEndRecord();
  if (window_.error() != 0) return false;
  // The record with 64-bit numbers is found by a locator before the plain one, and does not need that.
  const std::uint64_t plain = end.value_or(fileSize_);
  if (plain >= locatorBytes && readLargeEndRecord(plain - locatorBytes)) return rest_ > 0;
  return end && readEndRecord(*end) && rest_ > 0;
}

/// The last one, for a comment of any content may follow it.
std::optional<std::uint64_t> ZipTable::findEndRecord() {
  const std::uint64_t most = std::min<std::uint64_t>(fileSize_, endRecordBytes + longestComment);
  const std::string_view bytes = window_.view(fileSize_ - most, most);
  if (bytes.size() < endRecordBytes) return std::nullopt;
  const auto at = bytes.rfind("PK\5\6"sv, bytes.size() - endRecordBytes);
  if (at == std::string_view::npos) return std::nullopt;
  return fileSize_ - most + at;
}

bool ZipTable::readEndRecord(std::uint64_t position) {
  const std::string_view record = window_.view(position, endRecordBytes);
  const bool isWhole = littleEndian(record, 4, 4) == 0;  // not one of several files
  rest_ = littleEndian(record, 10, 2);
  return isWhole && littleEndian(record, 8, 2) == rest_ &&
         place(position, littleEndian(record, 16, 4), littleEndian(record, 12, 4));
}

bool ZipTable::readLargeEndRecord(std::uint64_t locator) {
  std::string_view bytes = window_.view(locator, locatorBytes);
  if (!bytes.starts_with("PK\6\7"sv)) return false;
  // Bytes before the archive make what the locator says too small; the record usually ends where it begins.
  const std::uint64_t usual = locator - std::min<std::uint64_t>(locator, largeEndRecordBytes);
  for (const std::uint64_t position : {littleEndian(bytes, 8, 8), usual}) {
    if (position > locator || locator - position < largeEndRecordBytes) continue;
    const std::string_view record = window_.view(position, largeEndRecordBytes);
    if (!record.starts_with("PK\6\6"sv)) continue;
    const bool isWhole = littleEndian(record, 16, 8) == 0;
    rest_ = littleEndian(record, 32, 8);
    return isWhole && littleEndian(record, 24, 8) == rest_ &&
           place(position, littleEndian(record, 48, 8), littleEndian(record, 40, 8));
  }
  return false;
}

/// Takes note of where the table is: right before its end record.
bool ZipTable::place(std::uint64_t end, std::uint64_t offset, std::uint64_t size) {
  if (size > end || offset > end - size) return false;
  position_ = end - size;
  shift_ = position_ - offset;
  end_ = end;
  return true;
}

std::optional<ZipEntry> ZipTable::next(std::size_t longestName) {
  if (rest_ == 0) return std::nullopt;
  std::string_view bytes = window_.view(position_, entryBytes);
  const std::size_t name = littleEndian(bytes, 28, 2);
  const std::size_t extra = littleEndian(bytes, 30, 2);
  const std::size_t size = entryBytes + name + extra + littleEndian(bytes, 32, 2);
  const bool isInside = position_ <= end_ && size <= end_ - position_;
  if (isInside) bytes = window_.view(position_, entryBytes + name + extra);
  if (!isInside || !bytes.starts_with("PK\1\2"sv) || bytes.size() < entryBytes + name + extra) {
    fail("Its table of contents is damaged.");
    return std::nullopt;
  }
  ZipEntry entry = readEntry(bytes, bytes.substr(entryBytes, std::min(name, longestName)));
  readLargeNumbers(entry, bytes.substr(entryBytes + name, extra));
  // One that leads past the file stays there.
  entry.position = entry.position > fileSize_ ? fileSize_ : entry.position + shift_;
  position_ += size;
  --rest_;
  return entry;
}

}  // namespace vantorium
