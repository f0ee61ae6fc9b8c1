#include "cache/stored_path.hpp"

#include <exception>

#include "platform/foundation/files.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

StoredPath::~StoredPath() {
  try {
    workers::async([path = path_] { removeAll(path); });
  } catch (const std::exception&) {
    // There is no memory for it. It goes with the whole cache then, at the next start.
  }
}

void StoredPath::remove() const { removeAll(path_); }

}  // namespace vantorium
