#include "drive/script_delegate.hpp"

#include "drive/records.hpp"

namespace vantorium::drive {

namespace {

unsigned bitOf(DelegateMethod method) { return 1U << static_cast<unsigned>(method); }

}  // namespace

const std::map<std::string, DelegateMethod>& ScriptDelegate::methods() {
  static const std::map<std::string, DelegateMethod> all{
      {"didReceiveRewardForPlacement:amount:", DelegateMethod::didReceiveReward},
      {"didPrecacheForPlacement:", DelegateMethod::didPrecache},
      {"didFailPrecacheForPlacement:error:", DelegateMethod::didFailPrecache},
      {"didReceiveClickForPlacement:", DelegateMethod::didReceiveClick},
      {"didConfigure", DelegateMethod::didConfigure},
      {"didFailConfigureWith:", DelegateMethod::didFailConfigure},
  };
  return all;
}

void ScriptDelegate::answer(const std::set<DelegateMethod>& methods) {
  unsigned bits = 0;
  for (const auto method : methods) bits |= bitOf(method);
  answered_ = bits;
}

bool ScriptDelegate::respondsTo(DelegateMethod method) const { return (answered_ & bitOf(method)) != 0; }

void ScriptDelegate::tell(const char* method, nlohmann::json details) {
  details["event"] = "delegate";
  details["method"] = method;
  tell_(std::move(details));
}

void ScriptDelegate::didReceiveReward(const std::string& placement, std::int64_t amount) {
  tell("didReceiveRewardForPlacement:amount:", {{"placement", placement}, {"amount", amount}});
}

void ScriptDelegate::didPrecache(const std::string& placement) {
  tell("didPrecacheForPlacement:", {{"placement", placement}});
}

void ScriptDelegate::didFailPrecache(const std::string& placement, const std::optional<Error>& error) {
  tell("didFailPrecacheForPlacement:error:", {{"placement", placement}, {"error", toJSON(error)}});
}

void ScriptDelegate::didReceiveClick(const std::string& placement) {
  tell("didReceiveClickForPlacement:", {{"placement", placement}});
}

void ScriptDelegate::didConfigure() { tell("didConfigure", nlohmann::json::object()); }

void ScriptDelegate::didFailConfigure(const std::optional<Error>& error) {
  tell("didFailConfigureWith:", {{"error", toJSON(error)}});
}

}  // namespace vantorium::drive
