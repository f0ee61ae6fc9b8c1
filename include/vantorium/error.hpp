#pragma once

#include <optional>
#include <string>

#include <vantorium/export.h>

namespace vantorium {

/// A failure, as a value. The SDK never throws across a public function: every failure arrives in a
/// completion or as a returned `Error`. Copies are independent; reading one is safe on any thread.
class VANTORIUM_API Error {
 public:
  /// An error of the platform (network, file system, JSON, player, web engine), with a domain and code of its
  /// own. `description` is one line for people; `debugDescription` is what reports carry, the description
  /// when empty.
  static Error platform(std::string domain, int code, std::string description,
                        std::string debugDescription = {});

  /// Who speaks: "com.vantorium" for the SDK's own errors, else the name of the part of the platform.
  const std::string& domain() const { return domain_; }
  /// The number of the failure within its domain.
  int code() const { return code_; }
  /// One line that says what was wrong and, where it helps, what to do.
  const std::string& localizedDescription() const { return description_; }
  /// The one-line text that logs and error reports carry: the debug description of a platform error, the
  /// localized description of one of the SDK's own.
  const std::string& errorMessage() const { return isPlatform_ ? debugDescription_ : description_; }

  /// Whether all of both is the same.
  friend bool operator==(const Error&, const Error&) = default;

 private:
  friend class VantoriumError;
  Error(std::string domain, int code, std::string description, std::string debugDescription, bool isPlatform);

  std::string domain_;
  int code_;
  std::string description_;
  std::string debugDescription_;
  bool isPlatform_;
};

/// The SDK's own errors. Each function makes the `Error` of one case; its localized description is the
/// message followed by " Domain: com.vantorium Code: " and the code.
class VANTORIUM_API VantoriumError {
 public:
  /// The domain of all of them.
  static constexpr const char* errorDomain = "com.vantorium";
  /// The code of each, in the order of the functions below.
  enum Code : int {
    notConfiguredCode = 1,
    internalErrorCode = 2,
    noInternetConnectionCode = 3,
    noPrecachedDataToShowCode = 4,
    functionInProgressCode = 5,
  };

  /// Something was asked for before `configure` succeeded.
  static Error notConfigured();
  /// The service or the SDK failed. A given message, even an empty one, replaces the default text.
  static Error internalError(std::optional<std::string> message = std::nullopt);
  /// The device is offline; ads need a connection.
  static Error noInternetConnection();
  /// There is nothing on disk to show for the placement. A given message replaces the default text.
  static Error noPrecachedDataToShow(std::optional<std::string> message = std::nullopt);
  /// The same call has not finished yet.
  static Error functionInProgress();

  /// Whether `error` is the SDK's own error with this code.
  static bool is(const Error& error, Code code);
};

}  // namespace vantorium
