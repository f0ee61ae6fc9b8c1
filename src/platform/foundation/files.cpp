#include "platform/foundation/files.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <unicode/utf8.h>

#include <array>
#include <cerrno>
#include <exception>
#include <system_error>

#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/temporary_file.hpp"

namespace vantorium {

namespace fs = std::filesystem;

std::optional<Error> createDirectoryIfNeeded(const fs::path& path) {
  std::error_code error;
  if (!fs::exists(path, error)) fs::create_directories(path, error);
  if (!error) return std::nullopt;
  return posixError(error.value(), "create the folder", path);
}

// A killed process loses nothing this way. It is not synced to the disk: a caller's thread would wait for
// that.
std::optional<Error> writeFileAtomically(const fs::path& path, std::string_view content) {
  std::optional<Error> error;
  auto file = TemporaryFile::createBeside(path, error);
  if (!file) return error;
  if ((error = file->append(content))) return error;
  return file->moveTo(path);
}

std::optional<std::string> readFile(const fs::path& path, std::optional<Error>& error) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string content;
  std::array<char, 65536> block;
  ssize_t count = file.isOpen() ? 1 : -1;
  while (count > 0 || (count < 0 && errno == EINTR && file.isOpen())) {
    count = ::read(file.get(), block.data(), block.size());
    if (count > 0) content.append(block.data(), static_cast<std::size_t>(count));
  }
  if (count == 0) return content;
  error = posixError(errno, "read", path);
  return std::nullopt;
}

std::optional<std::string> readTextFile(const fs::path& path, std::optional<Error>& error) {
  auto content = readFile(path, error);
  if (!content || isUTF8(*content)) return content;
  error = Error::platform("posix", EILSEQ,
                          fmt::format("Could not read {}: it is not UTF-8 text.", path.string()));
  return std::nullopt;
}

void removeAll(const fs::path& path) noexcept {
  // Stopped by what another remover took away first, or by a disk's moment of weakness, it goes on.
  constexpr int attempts = 5;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    try {
      std::error_code error;
      fs::remove_all(path, error);
      if (!error) return;
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): out of memory; perhaps not for long
    }
  }
}

bool isUTF8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    UChar32 character = 0;
    U8_NEXT(text, at, text.size(), character);
    if (character < 0) return false;
  }
  return true;
}

Error posixError(int code, std::string_view what, const fs::path& path) {
  std::string text =
      fmt::format("Could not {} {}: {}.", what, path.string(), std::generic_category().message(code));
  if (code == ENOSPC || code == EDQUOT) text += " Free some space and try again.";
  if (code == EACCES || code == EPERM || code == EROFS) text += " Let the application write there.";
  return Error::platform("posix", code, std::move(text));
}

}  // namespace vantorium
