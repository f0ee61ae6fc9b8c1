#include "cache/stored_path.hpp"

#include <exception>
#include <system_error>

#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

StoredPath::~StoredPath() {
  try {
    workers::async([path = path_] {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    });
  } catch (const std::exception&) {
    // There is no memory for it. It goes with the whole cache then, at the next start.
  }
}

void StoredPath::remove() const {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace vantorium
