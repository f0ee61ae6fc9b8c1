#include "facade/client.hpp"

#include "device/init_request_builder.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

namespace {

std::shared_ptr<HTTPSession> makeSession(const FileStore& files, const ServiceConfiguration& configuration) {
  // Inside the cache, so that a large body is saved by moving it.
  auto* session = new HTTPSession({.spoolDirectory = files.root() / ".spool",
                                   .trustedCertificate = configuration.trustedCertificate,
                                   .limits = configuration.limits});
  // The last reference may go inside one of the session's own callbacks, where it cannot wait for itself to
  // end.
  return {session, [](HTTPSession* ended) { workers::async([ended] { delete ended; }); }};
}

/// What the service is told about the device.
ClientDevice describe(const std::shared_ptr<SdkContext>& context,
                      const std::shared_ptr<const VantoriumReachability>& reachability,
                      const std::shared_ptr<UserDefaults>& defaults) {
  return {.connectionType =
              [reachability] {
                return reachability ? std::optional(reachability->currentReachabilityTechnologyString())
                                    : std::nullopt;
              },
          .description =
              [context, defaults](const std::string& appID, const std::string& userID) {
                return InitRequestBuilder::requestBody(context->host(), *defaults, appID, userID,
                                                       std::nullopt);
              }};
}

}  // namespace

Client Client::make(const std::shared_ptr<SdkContext>& context, const ServiceConfiguration& configuration) {
  Client client;
  client.reachability = VantoriumReachability::make(context->host());
  client.userDefaultsClient = std::make_shared<UserDefaultsClient>(context);
  const auto files = std::make_shared<FileStore>(context->host().directories(), configuration.cacheBudget);
  client.session = makeSession(*files, configuration);
  client.cacheClient = {std::make_shared<Inventory>(configuration.campaignLifetime), files,
                        std::make_shared<FileDownloader>(context, client.session, files)};
  client.httpClient = std::make_shared<HTTPClient>(
      context, client.session, configuration.baseURL,
      describe(context, client.reachability, client.userDefaultsClient->defaults()));
  return client;
}

}  // namespace vantorium
