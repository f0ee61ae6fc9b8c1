#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "drive/command.hpp"
#include "drive/output.hpp"
#include "drive/script_delegate.hpp"
#include "facade/sdk.hpp"
#include "hosts/headless/headless_host.hpp"
#include "hosts/headless/host_lease.hpp"
#include "native_ads/native_ad_view.hpp"

namespace vantorium::drive {

struct StageOptions {
  std::filesystem::path home;  ///< absolute
  headless::ClockKind clock = headless::ClockKind::virtualTime;
  ServiceConfiguration service;
};

/// What a script plays on: an application on a headless host, its native ad views, and an SDK of its own.
/// Main thread only, unless a member says otherwise.
class Stage {
 public:
  /// Events go to `output`, which outlives the stage. Throws `Refusal` when the service's addresses may not
  /// be a service's.
  Stage(const StageOptions& options, Output& output);
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  Sdk& sdk() { return *sdk_; }
  headless::Host& host() { return *host_; }
  Output& output() { return output_; }
  bool isTimeVirtual() const { return clock_ == headless::ClockKind::virtualTime; }

  /// Adds the event to the output. Any thread.
  void tell(nlohmann::json event) { host_->tell(std::move(event)); }
  /// Likewise, with the command's tag when it has one.
  void answer(const Command& command, nlohmann::json event);
  /// Runs what is due on the main queue, and what that causes.
  void settle() { host_->loop().runPending(); }

  void setDelegate(std::shared_ptr<ScriptDelegate> delegate);
  const std::shared_ptr<ScriptDelegate>& delegate() const { return delegate_; }

  /// Ends the SDK, silently and within seconds. False when something of it lives on all the same: the stage
  /// may not be destroyed then.
  bool end();

  std::map<std::string, std::shared_ptr<VantoriumNativeAdView>> nativeViews;
  /// Of the latest `precacheNativeAds` that has completed.
  std::vector<std::shared_ptr<VantoriumNativeAd>> ads;
  std::map<std::string, std::shared_ptr<VantoriumAdOptions>> namedOptions;
  bool wasUsed = false;  ///< some entry point was called

 private:
  Output& output_;
  const headless::ClockKind clock_;
  std::shared_ptr<headless::Host> host_;
  std::optional<headless::HostLease> lease_;
  std::shared_ptr<Sdk> sdk_;
  std::shared_ptr<ScriptDelegate> delegate_;
};

}  // namespace vantorium::drive
