#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "cache/cache_client.hpp"
#include "context/sdk_context.hpp"
#include "device/reachability.hpp"
#include "device/user_defaults.hpp"
#include "platform/net/http_session.hpp"
#include "protocol/http_client.hpp"

namespace vantorium {

inline constexpr const char* defaultBaseURL = "https://api.vantorium.com";
inline constexpr const char* defaultWidgetURL = "https://widget.vantorium.com";

/// Which service the SDK talks to, and how much it keeps.
struct ServiceConfiguration {
  std::string baseURL = defaultBaseURL;           ///< one that `checkServiceURL` accepts
  std::string widgetURL = defaultWidgetURL;       ///< of the offer wall; likewise
  std::filesystem::path trustedCertificate = {};  ///< PEM file to trust besides the system's; empty for none
  HTTPLimits limits = {};
  std::uint64_t cacheBudget = std::uint64_t{256} << 20U;  ///< bytes of shown creatives that are kept on disk
  Seconds campaignLifetime{24 * 3600};                    ///< after which a campaign gives way to a newer one
};

/// The SDK's services, made together and handed out one by one: each class takes what it uses. None is null
/// but where said.
struct Client {
  /// Empties the cache folder.
  static Client make(const std::shared_ptr<SdkContext>& context, const ServiceConfiguration& configuration);

  std::shared_ptr<VantoriumReachability> reachability;  ///< null where the platform offers no monitor
  std::shared_ptr<UserDefaultsClient> userDefaultsClient;
  CacheClient cacheClient;
  std::shared_ptr<HTTPClient> httpClient;
  std::shared_ptr<HTTPSession> session;
};

}  // namespace vantorium
