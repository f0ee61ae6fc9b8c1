#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <vantorium/error.hpp>

#include "facade/sdk.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// The one SDK of the process, from `setHost` to `end`. Any thread, but for these two.
class Process {
 public:
  static Process& shared();

  /// Null while there is no host.
  std::shared_ptr<Sdk> sdk() EXCLUDES(mutex_);
  std::optional<Error> setHost(std::shared_ptr<Host> host) EXCLUDES(mutex_);
  void end() EXCLUDES(mutex_);

 private:
  Mutex mutex_;
  std::shared_ptr<Sdk> sdk_ GUARDED_BY(mutex_);
  /// Kept: the last of an ended SDK may be released on a worker thread, where no toolkit could be taken down.
  std::vector<std::shared_ptr<Host>> hosts_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
