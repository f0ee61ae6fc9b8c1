#include "cache/file_store.hpp"

#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

FileStore::FileStore(const Directories& directories, std::uint64_t budget)
    : caches_(directories.caches), folder_(caches_, folderName), shelf_(budget) {
  empty();
}

std::shared_ptr<const StoredPath> FileStore::claim(const std::string& name) const {
  folder_.own();
  return std::make_shared<StoredPath>(root() / name);
}

void FileStore::clear() {
  shelf_.clear();
  empty();
}

/// The names are gone at once; thousands of files are not, and the caller may be the application's main
/// thread.
void FileStore::empty() const {
  folder_.empty();
  workers::async([caches = caches_, own = root()] { OwnedFolder::collect(caches, folderName, own); });
}

}  // namespace vantorium
