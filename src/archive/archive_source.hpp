#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

/// The file of an archive, opened once, so that what was checked is what is read. Any thread.
class ArchiveSource {
 public:
  /// Opens the file; see `isOpen`. Only a regular file is: a pipe would keep its reader waiting.
  explicit ArchiveSource(const std::filesystem::path& path);

  bool isOpen() const { return file_.isOpen(); }
  /// Why it is not open, an `errno` value.
  int error() const { return error_; }
  std::uint64_t size() const { return size_; }
  /// Whether this is the file with that device and inode number.
  bool isFile(std::uint64_t device, std::uint64_t inode) const {
    return device == device_ && inode == inode_;
  }

  /// Copies bytes from `position` on and returns how many; fewer than asked for when the file ends, or with
  /// `error` set to an `errno` value when it cannot be read.
  std::size_t read(std::uint64_t position, std::span<char> bytes, int& error) const;

 private:
  FileDescriptor file_;
  int error_ = 0;
  std::uint64_t size_ = 0;
  std::uint64_t device_ = 0;
  std::uint64_t inode_ = 0;
};

/// A piece of an archive in memory, which moves on with its reader. One thread at a time.
class ArchiveWindow {
 public:
  /// A view may be asked to hold so many bytes: more than any record of an archive has.
  static constexpr std::size_t mostAtOnce = 136 * 1024;

  /// The source outlives the window.
  explicit ArchiveWindow(const ArchiveSource& source) : source_(source) {}

  /// The bytes from `position` on: at least so many, and as many more as are at hand. Fewer when the file
  /// ends or cannot be read. They stay until the next call.
  std::string_view view(std::uint64_t position, std::size_t least = 1);
  /// Why the file could not be read, an `errno` value, or 0.
  int error() const { return error_; }

 private:
  const ArchiveSource& source_;
  std::vector<char> bytes_ = std::vector<char>(mostAtOnce);
  std::uint64_t start_ = 0;
  std::size_t size_ = 0;
  int error_ = 0;
};

}  // namespace vantorium
