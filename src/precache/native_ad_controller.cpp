#include "precache/native_ad_controller.hpp"

#include <unordered_set>
#include <utility>

#include "platform/foundation/url.hpp"

namespace vantorium {

NativeAdController::NativeAdController(std::shared_ptr<VantoriumNativeAd> nativeAd,
                                       std::shared_ptr<SdkContext> context, CacheClient cache)
    : nativeAd_(std::move(nativeAd)), context_(std::move(context)), cache_(std::move(cache)) {}

/// What is to be fetched, in the order in which failures count; each once, lest two downloads write one file.
std::vector<Wanted> NativeAdController::wanted() const {
  std::vector<Wanted> all;
  std::unordered_set<std::string> known;
  const auto add = [&](const char* field, const std::string& url) {
    if (known.insert(url).second) all.push_back({field, url});
  };
  for (const auto& asset : nativeAd_->assets) add("assets", asset->URL);
  add("appIcon", nativeAd_->appIconURL);
  return all;
}

void NativeAdController::precache(std::shared_ptr<DispatchQueue> queue, Completion completion) {
  // A folder of our own naming: an identifier from the network would be a path from the network.
  const auto folder = cache_.files->claim(makeUUID());
  nativeAd_->files_ = folder;
  std::vector<Download> downloads;
  std::optional<Error> flaw;
  for (auto& plan : planDistinctDownloads(wanted(), folder->path())) {
    // What stands behind the first failure is not written down, so it need not be fetched.
    if (plan && !flaw) downloads.push_back(std::move(*plan));
    if (!plan && !flaw) flaw = plan.error();
  }
  cache_.downloads->precacheFiles(
      std::move(downloads), [self = shared_from_this(), flaw, queue = std::move(queue),
                             completion = std::move(completion)](const std::vector<Result<File>>& files) {
        std::optional<Error> error;
        for (const auto& file : files) {
          if ((error = file.error())) break;
          self->record(*file);
        }
        if (!error) error = flaw;
        self->context_->onQueue(queue, [completion, error] { completion(error); });
      });
}

void NativeAdController::record(const File& file) const {
  for (const auto& asset : nativeAd_->assets) {
    if (asset->URL != file.sourcePath) continue;
    asset->filePath = file.destinationPath;
    asset->internalFilePath = file.destinationPath;
  }
  if (nativeAd_->appIconURL == file.sourcePath) nativeAd_->appIconFilePath = file.destinationPath;
}

}  // namespace vantorium
