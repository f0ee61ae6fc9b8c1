#pragma once

#include <memory>

#include "cache/file_downloader.hpp"
#include "cache/file_store.hpp"
#include "cache/inventory.hpp"

namespace vantorium {

/// Everything that is precached, behind one door: three parts that each guard themselves. None is null. Any
/// thread.
struct CacheClient {
  std::shared_ptr<Inventory> inventory;       ///< what there is to show, in memory
  std::shared_ptr<FileStore> files;           ///< the folder, and what of it is shared
  std::shared_ptr<FileDownloader> downloads;  ///< the one way from an address to a file
};

}  // namespace vantorium
