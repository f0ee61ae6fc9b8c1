#include <fmt/format.h>

#include <utility>

#include <vantorium/error.hpp>

namespace vantorium {

Error::Error(std::string domain, int code, std::string description, std::string debugDescription,
             bool isPlatform)
    : domain_(std::move(domain)),
      code_(code),
      description_(std::move(description)),
      debugDescription_(debugDescription.empty() ? description_ : std::move(debugDescription)),
      isPlatform_(isPlatform) {}

Error Error::platform(std::string domain, int code, std::string description, std::string debugDescription) {
  return {std::move(domain), code, std::move(description), std::move(debugDescription), true};
}

namespace {

std::string described(std::string_view message, int code) {
  return fmt::format("{} Domain: {} Code: {}", message, VantoriumError::errorDomain, code);
}

}  // namespace

Error VantoriumError::notConfigured() {
  return {errorDomain,
          notConfiguredCode,
          described("Vantorium framework is not configured.", notConfiguredCode),
          {},
          false};
}

Error VantoriumError::internalError(std::optional<std::string> message) {
  const std::string text = std::move(message).value_or("Unexpected internal error.");
  return {errorDomain, internalErrorCode, described(text, internalErrorCode), {}, false};
}

Error VantoriumError::noInternetConnection() {
  return {errorDomain,
          noInternetConnectionCode,
          described("No internet conection. Connection is required to show ads.", noInternetConnectionCode),
          {},
          false};
}

Error VantoriumError::noPrecachedDataToShow(std::optional<std::string> message) {
  const std::string text =
      std::move(message).value_or("Precache ads for placement before trying to show ads.");
  return {errorDomain, noPrecachedDataToShowCode, described(text, noPrecachedDataToShowCode), {}, false};
}

Error VantoriumError::functionInProgress() {
  return {errorDomain,
          functionInProgressCode,
          described("This function is in progress at the moment. Please wait for completion and try again.",
                    functionInProgressCode),
          {},
          false};
}

bool VantoriumError::is(const Error& error, Code code) {
  return !error.isPlatform_ && error.domain_ == errorDomain && error.code_ == code;
}

}  // namespace vantorium
