#include "platform/foundation/data.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/temporary_file.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

namespace fs = std::filesystem;

/// The bytes, and the spool file behind them while there is one.
class Data::Storage {
 public:
  explicit Storage(std::string memory) : memory_(std::move(memory)), bytes_(memory_) {}
  /// Nothing yet, until `adopt`.
  Storage() = default;
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;
  ~Storage() {
    if (mapping_ != nullptr) ::munmap(mapping_, bytes_.size());
    if (!spool_.empty()) ::unlink(spool_.c_str());
  }

  void adopt(void* mapping, std::size_t size, fs::path spool) noexcept {
    mapping_ = mapping;
    bytes_ = {static_cast<const char*>(mapping), size};
    const MutexLock lock(mutex_);
    spool_ = std::move(spool);
  }

  std::string_view bytes() const { return bytes_; }

  /// Moves the spool file to `path`; whether it did.
  bool move(const fs::path& path) {
    fs::path spool = takeSpool();
    if (spool.empty()) return false;
    if (std::rename(spool.c_str(), path.c_str()) == 0) return true;
    const MutexLock lock(mutex_);
    spool_ = std::move(spool);
    return false;
  }

  std::optional<Error> copy(const fs::path& path) const {
    if (mapping_ == nullptr) return writeFileAtomically(path, bytes_);
    std::optional<Error> error;
    auto file = TemporaryFile::createBeside(path, error);
    for (std::size_t at = 0; file && !error && at < bytes_.size(); at += copyStep) {
      error = file->append(bytes_.substr(at, copyStep));
      // Pages read for the copy would otherwise count as this process's memory.
      ::madvise(static_cast<char*>(mapping_) + at, std::min(copyStep, bytes_.size() - at), MADV_DONTNEED);
    }
    return error ? error : file->moveTo(path);
  }

 private:
  static constexpr std::size_t copyStep = std::size_t{1} << 20;

  fs::path takeSpool() {
    const MutexLock lock(mutex_);
    return std::exchange(spool_, {});
  }

  std::string memory_;
  void* mapping_ = nullptr;
  std::string_view bytes_;
  Mutex mutex_;
  fs::path spool_ GUARDED_BY(mutex_);
};

Data::Data() : Data(std::string()) {}

Data::Data(std::string bytes) : storage_(std::make_shared<Storage>(std::move(bytes))) {}

Data::Data(std::shared_ptr<Storage> storage) : storage_(std::move(storage)) {}

std::optional<Data> Data::adoptFile(const fs::path& path, std::optional<Error>& error) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.isOpen()) return adoptFile(file.get(), path, error);
  error = posixError(errno, "open", path);
  return std::nullopt;
}

std::optional<Data> Data::adoptFile(int descriptor, const fs::path& path, std::optional<Error>& error) {
  // All memory first: what is mapped has an owner at once.
  auto storage = std::make_shared<Storage>();
  fs::path spool = path;
  struct stat facts {};
  void* mapping = nullptr;
  bool mapped = ::fstat(descriptor, &facts) == 0;
  const auto size = static_cast<std::size_t>(facts.st_size);
  if (mapped && size > 0) {  // no bytes cannot be mapped
    mapping = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    mapped = mapping != MAP_FAILED;
  }
  if (mapped) {
    storage->adopt(mapping, size, std::move(spool));
    return Data(std::move(storage));
  }
  error = posixError(errno, "map", path);
  return std::nullopt;
}

std::string_view Data::bytes() const { return storage_->bytes(); }

std::optional<Error> Data::write(const fs::path& path) const {
  if (storage_->move(path)) return std::nullopt;
  return storage_->copy(path);
}

}  // namespace vantorium
