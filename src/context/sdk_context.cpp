#include "context/sdk_context.hpp"

#include <execinfo.h>
#include <fmt/format.h>

#include <array>
#include <cstdlib>

#include "platform/foundation/date_format.hpp"

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

void SdkContext::printLog(const std::string& message) {
  if (!flags().isTestMode) return;
  const DeviceFacts facts = host_->device().facts();
  const std::string time = formatDate(host_->clock().now(), "H:mm:ss.SSSS", facts.timezone, facts.locale);
  const std::string line = fmt::format("VANTORIUM LOG: {} : {}", time, message);
  {
    MutexLock lock(mutex_);
    log_ += line + "\n";
  }
  host_->print(line);
}

std::string SdkContext::log() const {
  MutexLock lock(mutex_);
  return log_;
}

void SdkContext::logError(const std::optional<std::string>& errorMessage) {
  if (!errorMessage) return;
  std::function<void(std::string)> reporter;
  {
    MutexLock lock(mutex_);
    reporter = errorReporter_;
  }
  if (reporter) reporter(*errorMessage + callStackSymbols());
}

void SdkContext::setErrorReporter(std::function<void(std::string)> reporter) {
  MutexLock lock(mutex_);
  errorReporter_ = std::move(reporter);
}

void SdkContext::setDelegate(std::weak_ptr<VantoriumDelegate> delegate) {
  MutexLock lock(mutex_);
  delegate_ = std::move(delegate);
}

std::shared_ptr<VantoriumDelegate> SdkContext::delegate() const {
  MutexLock lock(mutex_);
  return delegate_.lock();
}

void SdkContext::tellDelegate(DelegateMethod method, std::function<void(VantoriumDelegate&)> call) const {
  // The delegate is looked up when the call is made: one that was released meanwhile hears nothing.
  std::weak_ptr<VantoriumDelegate> weak;
  {
    // Not locked here: a thread that merely announces must not be the last to hold it.
    const MutexLock lock(mutex_);
    weak = delegate_;
  }
  onMain([weak = std::move(weak), method, call = std::move(call)] {
    const auto delegate = weak.lock();
    if (delegate && delegate->respondsTo(method)) call(*delegate);
  });
}

}  // namespace vantorium
