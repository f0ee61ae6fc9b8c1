#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include <vantorium/error.hpp>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

/// A new file of its own unique name, removed at the end of its life unless it was moved or released. Only
/// this user can read it. One thread at a time.
class TemporaryFile {
 public:
  /// How the names of those start that `createBeside` makes; one that was left behind by a killed process is
  /// told by it.
  static constexpr std::string_view hiddenPrefix = ".vantorium-";

  /// Creates the file in `directory`, its name starting with `prefix`; none with `error` set when it cannot.
  static std::optional<TemporaryFile> create(const std::filesystem::path& directory, std::string_view prefix,
                                             std::optional<Error>& error);
  /// The same in the folder of `path`, hidden, on its way to take the place of the file there.
  static std::optional<TemporaryFile> createBeside(const std::filesystem::path& path,
                                                   std::optional<Error>& error);
  TemporaryFile(TemporaryFile&&) noexcept = default;
  TemporaryFile& operator=(TemporaryFile&&) = delete;
  ~TemporaryFile();

  const std::filesystem::path& path() const { return path_; }
  int descriptor() const { return descriptor_.get(); }

  /// Appends all the bytes; returns the failure, a "posix" error.
  std::optional<Error> append(std::string_view bytes) const;
  /// Takes the place of whatever file is at `destination`, at once; returns the failure, a "posix" error.
  std::optional<Error> moveTo(const std::filesystem::path& destination);
  /// From here on somebody else removes the file.
  void release() { path_.clear(); }

 private:
  TemporaryFile(FileDescriptor descriptor, std::filesystem::path path)
      : descriptor_(std::move(descriptor)), path_(std::move(path)) {}

  FileDescriptor descriptor_;
  std::filesystem::path path_;
};

}  // namespace vantorium
