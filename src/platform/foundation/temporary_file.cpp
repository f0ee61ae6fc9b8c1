#include "platform/foundation/temporary_file.hpp"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/foundation/files.hpp"

namespace vantorium {

std::optional<TemporaryFile> TemporaryFile::create(const std::filesystem::path& directory,
                                                   std::string_view prefix, std::optional<Error>& error) {
  std::string name = (directory / prefix).string() + "XXXXXX";
  FileDescriptor descriptor(::mkostemp(name.data(), O_CLOEXEC));
  if (!descriptor.isOpen()) {
    error = posixError(errno, "create a temporary file in", directory);
    return std::nullopt;
  }
  try {
    return TemporaryFile(std::move(descriptor), name);
  } catch (...) {  // there is no memory for its path
    ::unlink(name.c_str());
    throw;
  }
}

std::optional<TemporaryFile> TemporaryFile::createBeside(const std::filesystem::path& path,
                                                         std::optional<Error>& error) {
  // Not named after the file: its name may be as long as names can be.
  return create(path.parent_path(), hiddenPrefix, error);
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) ::unlink(path_.c_str());
}

std::optional<Error> TemporaryFile::append(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return posixError(errno, "write", path_);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return std::nullopt;
}

std::optional<Error> TemporaryFile::moveTo(const std::filesystem::path& destination) {
  if (std::rename(path_.c_str(), destination.c_str()) != 0) return posixError(errno, "write", destination);
  release();
  return std::nullopt;
}

}  // namespace vantorium
