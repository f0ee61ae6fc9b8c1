#include "archive/archive_source.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace vantorium {

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

std::size_t ArchiveSource::read(std::uint64_t position, std::span<char> bytes, int& error) const {
  std::size_t done = 0;
  while (done < bytes.size() && position + done < size_) {
    const ssize_t count =
        ::pread(file_.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(position + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) error = errno;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

std::string_view ArchiveWindow::view(std::uint64_t position, std::size_t least) {
  const bool isInside = position >= start_ && position - start_ <= size_;
  if (!isInside || size_ - (position - start_) < least) {
    start_ = position;
    size_ = position < source_.size() ? source_.read(position, bytes_, error_) : 0;
  }
  return std::string_view(bytes_.data(), size_).substr(position - start_);
}

}  // namespace vantorium
