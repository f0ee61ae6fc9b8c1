#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>

#include "cache/cache_client.hpp"
#include "context/sdk_context.hpp"
#include "model/native_ad.hpp"

namespace vantorium {

/// Brings the files of one native ad, its media and its icon, to disk and writes into the record where they
/// are: they belong to the record from then on. Until the completion has run the record is the controller's
/// alone, and the controller lives until then.
class NativeAdController : public std::enable_shared_from_this<NativeAdController> {
 public:
  using Completion = std::function<void(std::optional<Error> error)>;

  NativeAdController(std::shared_ptr<VantoriumNativeAd> nativeAd, std::shared_ptr<SdkContext> context,
                     CacheClient cache);

  /// Downloads the files. Completes once, on `queue` (null: the main queue), with the error of the first file
  /// in order that failed; files after it are then not written into the record. Any thread.
  void precache(std::shared_ptr<DispatchQueue> queue, Completion completion);

 private:
  std::vector<Wanted> wanted() const;
  void record(const File& file) const;

  const std::shared_ptr<VantoriumNativeAd> nativeAd_;
  const std::shared_ptr<SdkContext> context_;
  const CacheClient cache_;
};

}  // namespace vantorium
