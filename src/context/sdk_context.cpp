#include "context/sdk_context.hpp"

#include <execinfo.h>
#include <fmt/format.h>

#include <array>
#include <cstdlib>

#include "platform/foundation/date_format.hpp"
#include "platform/foundation/run_or_drop.hpp"

namespace vantorium {

namespace {

/// The calling thread's stack, innermost frame first, a line each.
std::string callStackSymbols() {
  std::array<void*, 64> frames{};
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  const std::unique_ptr<char*, decltype(&std::free)> symbols(backtrace_symbols(frames.data(), count),
                                                             &std::free);
  std::string text;
  for (int i = 1; symbols && i < count; ++i) text += fmt::format("\n{}", symbols.get()[i]);
  return text;
}

}  // namespace

SdkContext::SdkContext(std::shared_ptr<Host> host) : host_(std::move(host)) {}

void SdkContext::onMain(std::function<void()> work) const { host_->mainQueue()->async(std::move(work)); }

void SdkContext::onQueue(const std::shared_ptr<DispatchQueue>& queue, std::function<void()> work) const {
  if (queue) {
    queue->async(std::move(work));
  } else {
    onMain(std::move(work));
  }
}

SdkContext::Flags SdkContext::flags() const {
  MutexLock lock(mutex_);
  return flags_;
}

void SdkContext::printLog(const std::string& message) noexcept {
  runOrDrop([&] {
    if (!flags().isTestMode) return;
    const DeviceFacts facts = host_->device().facts();
    const std::string time = formatDate(host_->clock().now(), "H:mm:ss.SSSS", facts.timezone, facts.locale);
    const std::string line = fmt::format("VANTORIUM LOG: {} : {}", time, message);
    {
      MutexLock lock(mutex_);
      log_.add(line);
    }
    host_->print(line);
  });
}

std::string SdkContext::log() const {
  MutexLock lock(mutex_);
  return log_.text();
}

void SdkContext::logError(const std::optional<std::string>& errorMessage) noexcept {
  if (!errorMessage) return;
  runOrDrop([&] {
    std::function<void(std::string)> reporter;
    {
      MutexLock lock(mutex_);
      reporter = errorReporter_;
    }
    if (reporter) reporter(*errorMessage + callStackSymbols());
  });
}

void SdkContext::setErrorReporter(std::function<void(std::string)> reporter) {
  MutexLock lock(mutex_);
  errorReporter_ = std::move(reporter);
}

void SdkContext::setDelegate(std::weak_ptr<VantoriumDelegate> delegate) {
  const MutexLock lock(delegate_->mutex);
  delegate_->delegate = std::move(delegate);
}

std::shared_ptr<VantoriumDelegate> SdkContext::delegate() const { return delegate_->lock(); }

void SdkContext::tellDelegate(DelegateMethod method, std::function<void(VantoriumDelegate&)> call) const {
  // The delegate is looked up when the call is made: one that was released meanwhile hears nothing, one that
  // was set meanwhile does.
  onMain([slot = delegate_, method, call = std::move(call)] {
    const auto delegate = slot->lock();
    if (delegate && delegate->respondsTo(method)) call(*delegate);
  });
}

std::shared_ptr<void> SdkContext::observeOnline(std::function<void()> handler) {
  return online_->add(std::move(handler));
}

void SdkContext::tellOnline() const {
  onMain([online = online_] { online->call(); });
}

void SdkContext::end() {
  if (!hasEnded_.exchange(true)) ended_.call();
}

std::shared_ptr<void> SdkContext::observeEnd(std::function<void()> handler) {
  return ended_.add(std::move(handler));
}

}  // namespace vantorium
