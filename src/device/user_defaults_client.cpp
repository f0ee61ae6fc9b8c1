#include "device/user_defaults.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

UserDefaultsClient::UserDefaultsClient(std::shared_ptr<SdkContext> context)
    : context_(std::move(context)),
      defaults_(std::make_shared<UserDefaults>(context_->host().directories().preferences)) {}

void UserDefaultsClient::recordInstallDate() {
  const Date now = context_->host().clock().now();
  defaults_->update([now](UserDefaults::Values& values) { recordInstallDate(values, now); });
}

void UserDefaultsClient::updateAppVersion() {
  const auto current = context_->host().device().facts().appVersion;
  const Date now = context_->host().clock().now();
  defaults_->update([&](UserDefaults::Values& values) { updateAppVersion(values, current, now); });
}

std::string UserDefaultsClient::updateUserID(std::optional<std::string> newUserID) {
  std::string result;
  defaults_->update(
      [&](UserDefaults::Values& values) { result = updateUserID(values, std::move(newUserID)); });
  return result;
}

std::string UserDefaultsClient::recordLaunch(std::optional<std::string> newUserID) {
  const auto current = context_->host().device().facts().appVersion;
  const Date now = context_->host().clock().now();
  std::string result;
  defaults_->update([&](UserDefaults::Values& values) {
    recordInstallDate(values, now);
    updateAppVersion(values, current, now);
    result = updateUserID(values, std::move(newUserID));
  });
  return result;
}

void UserDefaultsClient::recordInstallDate(UserDefaults::Values& values, Date now) {
  if (!values.date(settings_keys::appInstallDate)) values.set(settings_keys::appInstallDate, now);
}

void UserDefaultsClient::updateAppVersion(UserDefaults::Values& values,
                                          const std::optional<std::string>& current, Date now) {
  if (!current || values.string(settings_keys::appVersion) == current) return;
  values.set(settings_keys::appVersion, *current);
  values.set(settings_keys::appLastUpdateDate, now);
}

std::string UserDefaultsClient::updateUserID(UserDefaults::Values& values,
                                             std::optional<std::string> newUserID) {
  if (!newUserID) newUserID = values.string(settings_keys::userID);
  if (!newUserID) newUserID = makeUUID();
  values.set(settings_keys::userID, *newUserID);
  return *newUserID;
}

}  // namespace vantorium
