#include "native_ads/ad_services.hpp"

namespace vantorium {

std::shared_ptr<HTTPClient> AdServices::reports() const {
  const auto present = context.lock();
  return present && present->flags().isConfigured ? httpClient.lock() : nullptr;
}

}  // namespace vantorium
