#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <vantorium/error.hpp>
#include <vantorium/export.h>

namespace vantorium {

/// Creates the folder and its parents unless something, of whatever kind, exists at `path`. Returns the
/// failure, a "posix" error; whoever writes there next may leave it out, and hears of it then.
VANTORIUM_HOST_API std::optional<Error> createDirectoryIfNeeded(const std::filesystem::path& path);

/// Writes a whole file so that a reader, or a process killed half-way, sees the old content or the new one,
/// never a part. Returns the failure, a "posix" error; the old file is then untouched.
std::optional<Error> writeFileAtomically(const std::filesystem::path& path, std::string_view content);

/// The whole file as bytes, or none with `error` set.
VANTORIUM_HOST_API std::optional<std::string> readFile(const std::filesystem::path& path,
                                                       std::optional<Error>& error);

/// The whole file when it holds valid UTF-8 text, or none with `error` set.
VANTORIUM_HOST_API std::optional<std::string> readTextFile(const std::filesystem::path& path,
                                                           std::optional<Error>& error);

/// Removes what is there, folders with all they hold. Others may do the same meanwhile. Nothing is told of
/// what cannot be removed.
void removeAll(const std::filesystem::path& path) noexcept;

/// Whether the bytes are valid UTF-8.
bool isUTF8(std::string_view text);

/// The `errno` value `code` as an `Error` of domain "posix": what was tried, on which path, and why it
/// failed.
Error posixError(int code, std::string_view what, const std::filesystem::path& path);

}  // namespace vantorium
