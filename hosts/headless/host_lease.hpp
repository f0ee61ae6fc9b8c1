#pragma once

#include <atomic>
#include <memory>

#include "hosts/headless/headless_host.hpp"

namespace vantorium::headless {

/// Lends a host to the SDK and knows when all that the SDK started has let go of it, on whatever thread: the
/// host may be taken apart then. Main thread.
class HostLease {
 public:
  explicit HostLease(std::shared_ptr<Host> host) : host_(std::move(host)) {}

  /// The host as the SDK is to hold it.
  std::shared_ptr<vantorium::Host> lend() {
    return {host_.get(), [returned = returned_, loop = host_->mainQueue()](vantorium::Host*) {
              *returned = true;
              loop->async([] {});
            }};
  }
  /// Runs the main loop until what was lent is back; false if that takes longer than `timeout` of real time.
  bool awaitReturn(Seconds timeout = Seconds{30}) {
    return host_->loop().runUntil([this] { return returned_->load(); }, timeout);
  }

 private:
  std::shared_ptr<Host> host_;
  std::shared_ptr<std::atomic<bool>> returned_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace vantorium::headless
