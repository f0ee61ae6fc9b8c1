#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <vantorium/delegate.hpp>
#include <vantorium/error.hpp>

#include "context/diagnostic_log.hpp"
#include "platform/foundation/observers.hpp"
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
  void printLog(const std::string& message) noexcept EXCLUDES(mutex_);
  /// The log, each line ended by "\n": the newest lines, up to `DiagnosticLog::mostBytes`.
  std::string log() const EXCLUDES(mutex_);
  /// Reports an error to the service, with the stack of the calling thread. Nothing is reported when there is
  /// no message or, as yet, nobody to report as.
  void logError(const std::optional<std::string>& errorMessage) noexcept EXCLUDES(mutex_);
  /// Who uploads reports. Called on whatever thread reports; replaced by the SDK when it starts and ends.
  void setErrorReporter(std::function<void(std::string text)> reporter) EXCLUDES(mutex_);

  void setDelegate(std::weak_ptr<VantoriumDelegate> delegate);
  std::shared_ptr<VantoriumDelegate> delegate() const;
  /// Calls on the main queue whoever is the delegate by then, if it answers `method`.
  void tellDelegate(DelegateMethod method, std::function<void(VantoriumDelegate&)> call) const;

  /// Calls `handler` on the main queue each time the device comes online, as long as the returned token is
  /// kept: dropped on the main thread, it is not called after that.
  [[nodiscard]] std::shared_ptr<void> observeOnline(std::function<void()> handler);
  /// The device has come online.
  void tellOnline() const;

  /// The SDK is shut down: whatever waits for its time is given up.
  void end();
  bool hasEnded() const { return hasEnded_; }
  /// Calls `handler` on the thread that ends the SDK, as long as the returned token is kept. Look at
  /// `hasEnded` afterwards: an SDK that had ended before calls nothing.
  [[nodiscard]] std::shared_ptr<void> observeEnd(std::function<void()> handler);

 private:
  /// Apart, so that a call of the delegate that is queued keeps neither the context nor its host.
  struct DelegateSlot {
    Mutex mutex;
    std::weak_ptr<VantoriumDelegate> delegate GUARDED_BY(mutex);

    std::shared_ptr<VantoriumDelegate> lock() EXCLUDES(mutex) {
      const MutexLock guard(mutex);
      return delegate.lock();
    }
  };

  const std::shared_ptr<Host> host_;
  mutable Mutex mutex_;
  Flags flags_ GUARDED_BY(mutex_);
  DiagnosticLog log_ GUARDED_BY(mutex_);
  std::function<void(std::string)> errorReporter_ GUARDED_BY(mutex_);
  const std::shared_ptr<DelegateSlot> delegate_ = std::make_shared<DelegateSlot>();
  const std::shared_ptr<Observers> online_ = std::make_shared<Observers>();
  Observers ended_;
  std::atomic<bool> hasEnded_ = false;
};

}  // namespace vantorium
