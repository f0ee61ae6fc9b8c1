#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>
#include <vantorium/options.hpp>

#include "cache/cache_client.hpp"
#include "context/sdk_context.hpp"
#include "model/native_ad.hpp"
#include "precache/precaching_placements.hpp"
#include "protocol/http_client.hpp"

namespace vantorium {

/// Fetches native ads for a placement and has their files put on disk. It keeps none of them: the ads belong
/// to whoever asked. Any thread.
class NativeAdPrecacher : public std::enable_shared_from_this<NativeAdPrecacher> {
 public:
  using NativeAds = std::vector<std::shared_ptr<VantoriumNativeAd>>;
  using Completion = std::function<void(NativeAds ads, std::optional<Error> error)>;

  NativeAdPrecacher(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
                    CacheClient cache, std::shared_ptr<PrecachingPlacements> placements);

  /// Once accepted, the delegate hears of the result on the main queue; then, or when refused, the completion
  /// is called on `queue` (null: the main queue), once. Null options stand for fresh ones; a number of ads
  /// that is too large is brought down in the given ones.
  void precacheNativeAds(const std::string& forPlacement, std::shared_ptr<VantoriumNativeAdOptions> options,
                         std::shared_ptr<DispatchQueue> queue, Completion completion);

 private:
  /// One request and what it brought.
  struct Pass;

  void precacheFetched(const std::shared_ptr<Pass>& pass);
  void finish(const std::shared_ptr<Pass>& pass, const std::optional<Error>& error) const;

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPClient> httpClient_;
  const CacheClient cache_;
  const std::shared_ptr<PrecachingPlacements> precachingPlacements_;
};

}  // namespace vantorium
