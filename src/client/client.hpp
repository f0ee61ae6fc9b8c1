#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>

#include "cache/cache_client.hpp"
#include "cache/file_downloader.hpp"
#include "context/sdk_context.hpp"
#include "device/user_defaults.hpp"
#include "platform/net/http_session.hpp"
#include "protocol/http_client.hpp"

namespace vantorium {

inline constexpr const char* defaultBaseURL = "https://api.vantorium.com";
inline constexpr const char* defaultWidgetURL = "https://widget.vantorium.com";

/// Which service the SDK talks to.
struct ServiceConfiguration {
  std::string baseURL = defaultBaseURL;           ///< one that `checkServiceURL` accepts
  std::string widgetURL = defaultWidgetURL;       ///< of the offer wall; likewise
  std::filesystem::path trustedCertificate = {};  ///< PEM file to trust besides the system's; empty for none
  HTTPLimits limits = {};
};

/// The SDK's services, made together and kept for its life. Making one empties the cache folder.
class Client {
 public:
  explicit Client(std::shared_ptr<SdkContext> sdkContext, const ServiceConfiguration& configuration = {});
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  /// Ends every exchange under way, each with its one completion, within a second; later ones are cancelled
  /// at once. To be called before the application goes; any thread but the callback queue of the network.
  void shutdown();
  bool isShutDown() const { return isShutDown_; }

  const std::shared_ptr<SdkContext> context;
  const std::string widgetURL;

 private:
  const std::shared_ptr<HTTPSession> session_;
  std::atomic<bool> isShutDown_{false};

 public:
  const std::shared_ptr<UserDefaultsClient> userDefaultsClient;
  const std::shared_ptr<CacheClient> cacheClient;
  const std::shared_ptr<HTTPClient> httpClient;
  /// Fetches creatives for the cache.
  const std::shared_ptr<FileDownloaderProtocol> fileDownloader;
  /// Archives are unpacked one after another, so that they take one of the few worker threads at most.
  const std::shared_ptr<DispatchQueue> unpackQueue;
};

/// The client, if it is there and its SDK is configured: whom views report to; else null. Any thread.
std::shared_ptr<Client> configuredClient(const std::weak_ptr<Client>& client);

}  // namespace vantorium
