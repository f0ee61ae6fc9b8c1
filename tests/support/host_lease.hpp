#pragma once

#include <atomic>
#include <memory>

#include "hosts/headless/headless_host.hpp"

namespace vantorium::testing {

/// Lends a host to the SDK and knows when all that the SDK started has let go of it, on whatever thread: a
/// test may take its world apart then.
class HostLease {
 public:
  explicit HostLease(std::shared_ptr<headless::Host> host) : host_(std::move(host)) {}

  std::shared_ptr<Host> lend() {
    return {host_.get(), [returned = returned_, loop = host_->mainQueue()](Host*) {
              *returned = true;
              loop->async([] {});
            }};
  }
  /// Runs the main loop until what was lent is back.
  bool awaitReturn() {
    return host_->loop().runUntil([this] { return returned_->load(); });
  }

 private:
  std::shared_ptr<headless::Host> host_;
  std::shared_ptr<std::atomic<bool>> returned_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace vantorium::testing
