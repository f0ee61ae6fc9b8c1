#pragma once

#include <minizip/ioapi.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

/// The bytes of an archive, as minizip asks for them. It is opened once, so that what was checked is what is
/// read; and read through two windows, because minizip goes to and fro between the table of contents at the
/// end and the entries. One thread at a time.
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

  /// The next bytes from `position` on, as many as are at hand: none when the file ends or cannot be read.
  /// They stay until the next call.
  std::string_view view(std::uint64_t position);
  /// Copies bytes from `position` on; fewer than asked for when the file ends or cannot be read.
  std::size_t read(std::uint64_t position, std::span<char> bytes);

  /// What minizip calls. It refers to this object, which must outlive the use.
  zlib_filefunc64_def functions();

 private:
  struct Window {
    std::uint64_t start = 0;
    std::size_t size = 0;
    std::array<char, 131072> bytes;
  };

  static voidpf openFile(voidpf self, const void* name, int mode);
  static uLong readFile(voidpf self, voidpf stream, void* bytes, uLong size);
  static uLong writeFile(voidpf self, voidpf stream, const void* bytes, uLong size);
  static ZPOS64_T tellFile(voidpf self, voidpf stream);
  static long seekFile(voidpf self, voidpf stream, ZPOS64_T offset, int origin);
  static int closeFile(voidpf self, voidpf stream);
  static int fileError(voidpf self, voidpf stream);

  std::size_t fill(Window& window);
  Window& nearest(std::uint64_t position);

  FileDescriptor file_;
  int error_ = 0;
  std::uint64_t size_ = 0;
  std::uint64_t device_ = 0;
  std::uint64_t inode_ = 0;
  std::uint64_t position_ = 0;
  std::array<Window, 2> windows_;
};

}  // namespace vantorium
