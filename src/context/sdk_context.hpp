#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <vantorium/delegate.hpp>
#include <vantorium/error.hpp>

#include "platform/foundation/thread_annotations.hpp"
#include "platform/host.hpp"

namespace vantorium {

/// What everybody in the SDK may ask: the host, the state flags, the diagnostic log and the delegate. One per
/// SDK, shared by all that need it, so it outlives whatever is still under way. Any thread.
class SdkContext {
 public:
  explicit SdkContext(std::shared_ptr<Host> host);
  SdkContext(const SdkContext&) = delete;
  SdkContext& operator=(const SdkContext&) = delete;

  Host& host() const { return *host_; }
  /// Runs `work` later on the main queue.
  void onMain(std::function<void()> work) const;
  /// Runs `work` later on `queue`, or on the main queue when it is null.
  void onQueue(const std::shared_ptr<DispatchQueue>& queue, std::function<void()> work) const;

  struct Flags {
    bool isConfigured = false;                    ///< an init exchange has succeeded
    bool isConfiguring = false;                   ///< an init exchange is under way
    bool isShowingAds = false;                    ///< a full-screen ad is being prepared or shown
    bool autoCaching = true;                      ///< interstitial and rewarded placements are kept precached
    bool isTestMode = false;                      ///< the service asked for diagnostics
    std::optional<std::string> showingPlacement;  ///< of the campaign on screen
  };
  Flags flags() const EXCLUDES(mutex_);
  /// Changes flags as one step; `change` must not call out. Returns what `change` returns.
  template <typename Change>
  auto updateFlags(Change change) EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    return change(flags_);
  }

  /// Notes progress, in test mode only: one line in the log and on the console.
  void printLog(const std::string& message) EXCLUDES(mutex_);
  /// The whole log so far, each line ended by "\n".
  std::string log() const EXCLUDES(mutex_);
  /// Reports an error to the service, with the stack of the calling thread. Nothing is reported when there is
  /// no message or, as yet, nobody to report as.
  void logError(const std::optional<std::string>& errorMessage) EXCLUDES(mutex_);
  /// Who uploads reports. Called on whatever thread reports; replaced by the SDK when it starts and ends.
  void setErrorReporter(std::function<void(std::string text)> reporter) EXCLUDES(mutex_);

  void setDelegate(std::weak_ptr<VantoriumDelegate> delegate) EXCLUDES(mutex_);
  std::shared_ptr<VantoriumDelegate> delegate() const EXCLUDES(mutex_);
  /// Calls the delegate on the main queue, if it is still there by then and answers `method`.
  void tellDelegate(DelegateMethod method, std::function<void(VantoriumDelegate&)> call) const;

 private:
  const std::shared_ptr<Host> host_;
  mutable Mutex mutex_;
  Flags flags_ GUARDED_BY(mutex_);
  std::string log_ GUARDED_BY(mutex_);
  std::function<void(std::string)> errorReporter_ GUARDED_BY(mutex_);
  std::weak_ptr<VantoriumDelegate> delegate_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
