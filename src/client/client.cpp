#include "client/client.hpp"

#include "device/reachability.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

namespace {

std::shared_ptr<HTTPSession> makeSession(const SdkContext& context,
                                         const ServiceConfiguration& configuration) {
  // Inside the cache, so that a large body is saved by moving it.
  auto* session = new HTTPSession(
      {.spoolDirectory = CacheClient::cacheDirectoryPath(context.host().directories()) / ".spool",
       .trustedCertificate = configuration.trustedCertificate,
       .limits = configuration.limits});
  // The last reference may go inside one of the session's own callbacks, where it cannot wait for itself to
  // end.
  return {session, [](HTTPSession* ended) { workers::async([ended] { delete ended; }); }};
}

}  // namespace

Client::Client(std::shared_ptr<SdkContext> sdkContext, const ServiceConfiguration& configuration)
    : context(std::move(sdkContext)),
      widgetURL(configuration.widgetURL),
      session_(makeSession(*context, configuration)),
      userDefaultsClient(std::make_shared<UserDefaultsClient>(context)),
      cacheClient(std::make_shared<CacheClient>(context)),
      httpClient(std::make_shared<HTTPClient>(context, session_, configuration.baseURL,
                                              VantoriumReachability::make(context->host()),
                                              userDefaultsClient->defaults())),
      fileDownloader(std::make_shared<FileDownloader>(context, session_)),
      unpackQueue(DispatchQueue::serial("vantorium.unpack")) {}

std::shared_ptr<Client> configuredClient(const std::weak_ptr<Client>& client) {
  auto present = client.lock();
  return present && present->context->flags().isConfigured ? present : nullptr;
}

void Client::shutdown() {
  isShutDown_ = true;
  session_->shutdown();
}

}  // namespace vantorium
