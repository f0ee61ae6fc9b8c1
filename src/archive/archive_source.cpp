#include "archive/archive_source.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vantorium {

namespace {

std::uint64_t distance(std::uint64_t a, std::uint64_t b) { return a > b ? a - b : b - a; }

}  // namespace

ArchiveSource::ArchiveSource(const std::filesystem::path& path)
    : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  struct stat facts {};
  if (!file_.isOpen() || ::fstat(file_.get(), &facts) != 0) {
    error_ = errno;
  } else if (!S_ISREG(facts.st_mode)) {
    error_ = S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
  }
  if (error_ != 0) {
    file_ = FileDescriptor();
    return;
  }
  size_ = static_cast<std::uint64_t>(facts.st_size);
  device_ = facts.st_dev;
  inode_ = facts.st_ino;
}

zlib_filefunc64_def ArchiveSource::functions() {
  return {openFile, readFile, writeFile, tellFile, seekFile, closeFile, fileError, this};
}

std::size_t ArchiveSource::fill(Window& window) {
  ssize_t count = 0;
  do {
    count = ::pread(file_.get(), window.bytes.data(), window.bytes.size(), static_cast<off_t>(window.start));
  } while (count < 0 && errno == EINTR);
  if (count < 0) error_ = errno;
  return count < 0 ? 0 : static_cast<std::size_t>(count);
}

// The one that is nearer moves on; so one stays with the table of contents.
ArchiveSource::Window& ArchiveSource::nearest(std::uint64_t position) {
  const bool first = distance(position, windows_[0].start) < distance(position, windows_[1].start);
  return windows_[first ? 0 : 1];
}

std::string_view ArchiveSource::view(std::uint64_t position) {
  const auto holds = [position](const Window& window) {
    return position >= window.start && position - window.start < window.size;
  };
  const auto found = std::ranges::find_if(windows_, holds);
  Window& window = found != windows_.end() ? *found : nearest(position);
  if (found == windows_.end()) {
    window.start = position;
    window.size = position < size_ ? fill(window) : 0;
  }
  return std::string_view(window.bytes.data(), window.size).substr(position - window.start);
}

std::size_t ArchiveSource::read(std::uint64_t position, std::span<char> bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::string_view some = view(position + done).substr(0, bytes.size() - done);
    if (some.empty()) break;
    std::memcpy(bytes.data() + done, some.data(), some.size());
    done += some.size();
  }
  return done;
}

voidpf ArchiveSource::openFile(voidpf self, const void* /*name*/, int /*mode*/) {
  auto& source = *static_cast<ArchiveSource*>(self);
  return source.isOpen() ? self : nullptr;
}

uLong ArchiveSource::readFile(voidpf self, voidpf /*stream*/, void* bytes, uLong size) {
  auto& source = *static_cast<ArchiveSource*>(self);
  const std::size_t done = source.read(source.position_, {static_cast<char*>(bytes), size});
  source.position_ += done;
  // minizip takes bytes past the end for zeros unless it is told of an error.
  if (done < size && source.error_ == 0) source.error_ = EIO;
  return done;
}

uLong ArchiveSource::writeFile(voidpf /*self*/, voidpf /*stream*/, const void* /*bytes*/, uLong /*size*/) {
  return 0;
}

ZPOS64_T ArchiveSource::tellFile(voidpf self, voidpf /*stream*/) {
  return static_cast<ArchiveSource*>(self)->position_;
}

long ArchiveSource::seekFile(voidpf self, voidpf /*stream*/, ZPOS64_T offset, int origin) {
  auto& source = *static_cast<ArchiveSource*>(self);
  std::uint64_t base = 0;
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) base = source.position_;
  if (origin == ZLIB_FILEFUNC_SEEK_END) base = source.size_;
  const std::uint64_t position = base + offset;  // wraps around for an offset that is meant to be negative
  if (position > source.size_) return -1;
  source.position_ = position;
  return 0;
}

int ArchiveSource::closeFile(voidpf /*self*/, voidpf /*stream*/) { return 0; }

int ArchiveSource::fileError(voidpf self, voidpf /*stream*/) {
  return static_cast<ArchiveSource*>(self)->error_;
}

}  // namespace vantorium
