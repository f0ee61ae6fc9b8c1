#include "facade/process.hpp"

#include <utility>

namespace vantorium {

Process& Process::shared() {
  // Never destroyed: when statics go, the toolkit under the host may be gone. The network ends by itself at
  // exit.
  static auto* const process = new Process;
  return *process;
}

std::shared_ptr<Sdk> Process::sdk() {
  const MutexLock lock(mutex_);
  return sdk_;
}

std::optional<Error> Process::setHost(std::shared_ptr<Host> host) {
  if (!host) return VantoriumError::internalError("The host is null. Give Vantorium::setHost a host.");
  const MutexLock lock(mutex_);
  if (sdk_) {
    return VantoriumError::internalError(
        "There is a host already. Call Vantorium::setHost once, at the start.");
  }
  sdk_ = Sdk::make(host);
  hosts_.push_back(std::move(host));
  return std::nullopt;
}

void Process::end() {
  std::shared_ptr<Sdk> sdk;
  {
    const MutexLock lock(mutex_);
    sdk = std::exchange(sdk_, nullptr);
  }
  if (sdk) sdk->shutdown();
}

}  // namespace vantorium
