#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include <vantorium/delegate.hpp>

namespace vantorium::drive {

/// Tells what the SDK tells its delegate, and answers the methods that the script wants. Main thread, but for
/// `respondsTo`.
class ScriptDelegate : public VantoriumDelegate {
 public:
  explicit ScriptDelegate(std::function<void(nlohmann::json event)> tell) : tell_(std::move(tell)) {}

  /// The methods by their selectors.
  static const std::map<std::string, DelegateMethod>& methods();
  /// Only these are answered from now on; all of them at first.
  void answer(const std::set<DelegateMethod>& methods);

  bool respondsTo(DelegateMethod method) const override;
  void didReceiveReward(const std::string& placement, std::int64_t amount) override;
  void didPrecache(const std::string& placement) override;
  void didFailPrecache(const std::string& placement, const std::optional<Error>& error) override;
  void didReceiveClick(const std::string& placement) override;
  void didConfigure() override;
  void didFailConfigure(const std::optional<Error>& error) override;

 private:
  void tell(const char* method, nlohmann::json details);

  const std::function<void(nlohmann::json)> tell_;
  std::atomic<unsigned> answered_{~0U};  ///< a bit per method
};

}  // namespace vantorium::drive
