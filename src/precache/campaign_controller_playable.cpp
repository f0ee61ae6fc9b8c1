// The playable branch of the campaign controller.
#include <algorithm>
#include <filesystem>
#include <utility>

#include "archive/zip.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/foundation/worker_pool.hpp"
#include "precache/campaign_controller.hpp"

namespace vantorium {

void CampaignController::precachePlayable(const std::shared_ptr<DispatchQueue>& queue, int tryCounter,
                                          const Completion& completion) {
  const std::shared_ptr<SdkContext> context = client_->context;
  context->printLog("Trying to precache HTML files for placement id: " + placementID_);
  const auto complete = [context, queue, completion](std::optional<Error> error) {
    context->onQueue(queue, [completion, error = std::move(error)] { completion(!error, error); });
  };
  client_->cacheClient->precacheFiles(
      campaign_->identifier, {campaign_->zippedURL}, playablePathToRemove(), client_->fileDownloader,
      [weak = weak_from_this(), tryCounter, completion, complete](
          bool success, const std::vector<std::shared_ptr<File>>& files) {
        const auto self = weak.lock();
        if (!self) return;
        if (success) {
          // Not here: other batches end on this queue, and a large archive takes its time.
          workers::async([weak, files, complete] {
            if (const auto alive = weak.lock()) complete(alive->unpack(files));
          });
          return;
        }
        const bool hasError =
            std::ranges::any_of(files, [](const auto& file) { return file->error.has_value(); });
        if (hasError && tryCounter < retries) {
          self->precachePlayable(nullptr, tryCounter + 1, completion);
        } else {
          complete(VantoriumError::internalError("Can't precache or save files."));
        }
      });
}

/// The part of the archive's path that its folder on disk does without; the slash after it stays.
std::string CampaignController::playablePathToRemove() const {
  const auto base = URL::parse(campaign_->baseURL);
  std::string path = base ? base->path() : std::string{};
  while (path.ends_with('/')) path.pop_back();
  return path;
}

/// Unpacks the archives and writes the entry page, or returns what went wrong, reported.
std::optional<Error> CampaignController::unpack(const std::vector<std::shared_ptr<File>>& files) const {
  const auto failed = [this](const Error& error) {
    client_->context->logError(error.errorMessage());
    return std::optional(error);
  };
  for (const auto& file : files) {
    if (!file->destinationPath) continue;
    const std::filesystem::path archive = *file->destinationPath;
    if (const auto error = Zip::unzipFile(archive, archive.parent_path(), true)) return failed(*error);
  }
  // It takes the place of a page of that name from the archive.
  const auto page =
      std::filesystem::path(client_->cacheClient->getFolderPath(campaign_->identifier)) / "index.html";
  if (const auto error = writeFileAtomically(page, "<html><body>" + campaign_->tag + "</body></html>")) {
    return failed(*error);
  }
  client_->context->printLog("HTML files successufully downloaded and saved to disk for placement id: " +
                             placementID_);
  return std::nullopt;
}

}  // namespace vantorium
