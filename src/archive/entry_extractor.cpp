#include "archive/entry_extractor.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace vantorium {

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t ownerMayRead = 0400;
constexpr mode_t ownerMayAll = 0700;

/// The permissions that the archive has for the entry, if its owner may read it then.
std::optional<mode_t> permissionsOf(const ZipEntry& entry) {
  const mode_t mode = (entry.attributes >> 16U) & permissionBits;
  if (mode < ownerMayRead) return std::nullopt;
  return mode;
}

/// Something of another kind stands where the entry goes: nothing that another attempt would get past.
bool isOccupied(int code) { return code == ENOTDIR || code == ELOOP || code == EISDIR || code == ETXTBSY; }

}  // namespace

std::optional<ZipError> EntryExtractor::extract(const EntryJob& job, const IsStopped& isStopped) noexcept {
  try {
    if (isStopped(job.number)) return givenUp();
    if (const char* const flaw = reader_.openEntry(job.entry, password_)) return unreadable(job.entry, flaw);
    return job.path.isFolder() ? makeFolder(job) : makeFile(job, isStopped);
  } catch (...) {  // nothing else is thrown here
    return memoryFailure(ZipError::unzipFail);
  }
}

EntryExtractor::Failure EntryExtractor::makeFolder(const EntryJob& job) {
  // What stands in the way is the failure of the first file that goes there.
  if (job.folder == nullptr && !isOccupied(job.folderError)) return unwritable(job.entry, job.folderError);
  if (auto failure = check(job.entry, 0)) return failure;
  const auto mode = permissionsOf(job.entry);
  // Whatever the archive says, the folder can be filled, and removed again. A failure ends nothing.
  if (mode && job.folder != nullptr && !job.path.folder.empty())
    setPermissions(job.folder, *mode | ownerMayAll);
  return std::nullopt;
}

EntryExtractor::Failure EntryExtractor::makeFile(const EntryJob& job, const IsStopped& isStopped) {
  if (job.folder == nullptr) return unwritable(job.entry, job.folderError);
  int code = 0;
  ConfinedFile file = ConfinedFile::make(job.folder, job.path.name, existing_, source_, code);
  if (code == EEXIST) return std::nullopt;  // what is kept instead need not match
  if (code != 0) return unwritable(job.entry, code);
  if (auto failure = copy(job, file, isStopped)) return failure;
  // A failure ends nothing: the file has what the process gives to new ones.
  if (const auto mode = permissionsOf(job.entry)) file.setPermissions(*mode);
  code = file.keep();
  return code == 0 ? std::nullopt : unwritable(job.entry, code);
}

EntryExtractor::Failure EntryExtractor::copy(const EntryJob& job, const ConfinedFile& file,
                                             const IsStopped& isStopped) {
  std::uint64_t written = 0;
  auto bytes = reader_.read();
  while (bytes && !bytes->empty()) {
    if (isStopped(job.number)) return givenUp();
    if (bytes->size() > job.entry.bytes - written) return check(job.entry, written + bytes->size());
    const int code = file.append(*bytes);
    if (code != 0) return unwritableEntry(job.entry, code);
    written += bytes->size();
    bytes = reader_.read();
  }
  if (bytes) return check(job.entry, written);
  return unreadable(job.entry,
                    job.entry.isEncrypted ? "is damaged, or the password is wrong" : "is damaged or cut off");
}

EntryExtractor::Failure EntryExtractor::check(const ZipEntry& entry, std::uint64_t written) const {
  if (written != entry.bytes)
    return entryFailure(entry, fmt::format("has {}{} bytes where {} were announced",
                                           written > entry.bytes ? "at least " : "", written, entry.bytes));
  if (reader_.checksum() != entry.checksum)
    return entryFailure(entry, entry.isEncrypted ? "does not match its checksum, or the password is wrong"
                                                 : "does not match its checksum");
  return std::nullopt;
}

EntryExtractor::Failure EntryExtractor::unreadable(const ZipEntry& entry, std::string_view flaw) const {
  if (reader_.error() == 0) return entryFailure(entry, flaw);
  return entryFailure(entry, "cannot be read: " + std::generic_category().message(reader_.error()));
}

EntryExtractor::Failure EntryExtractor::unwritable(const ZipEntry& entry, int code) const {
  // An empty one that cannot be there is no loss.
  if (entry.bytes == 0 && isOccupied(code)) return check(entry, 0);
  return unwritableEntry(entry, code);
}

}  // namespace vantorium
