// The playable branch of the campaign controller.
#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "archive/zip.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "precache/campaign_controller.hpp"

namespace vantorium {

namespace {

/// What is left to do once the archive is on disk; needs no controller.
struct Unpacking {
  std::shared_ptr<Client> client;
  std::shared_ptr<Campaign> campaign;
  std::string placementID;

  std::filesystem::path folder() const { return client->cacheClient->getFolderPath(campaign->identifier); }

  /// Unpacks the archives and writes the entry page, or returns what went wrong, reported; nothing of the
  /// campaign is left on disk then.
  std::optional<Error> run(const std::vector<std::shared_ptr<File>>& files,
                           const Zip::IsCancelled& isCancelled) const {
    const auto error = unpack(files, isCancelled);
    if (error) {
      client->context->logError(error->errorMessage());
      std::error_code ignored;
      std::filesystem::remove_all(folder(), ignored);
    } else {
      client->context->printLog("HTML files successufully downloaded and saved to disk for placement id: " +
                                placementID);
    }
    return error;
  }

 private:
  std::optional<Error> unpack(const std::vector<std::shared_ptr<File>>& files,
                              const Zip::IsCancelled& isCancelled) const {
    for (const auto& file : files) {
      if (!file->destinationPath) continue;
      const std::filesystem::path archive = *file->destinationPath;
      if (auto error = Zip::unzipFile(archive, archive.parent_path(), true, {}, {}, {}, {}, isCancelled))
        return *error;
    }
    // It takes the place of a page of that name from the archive.
    return writeFileAtomically(folder() / "index.html", "<html><body>" + campaign->tag + "</body></html>");
  }
};

}  // namespace

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
          const Unpacking unpacking{self->client_, self->campaign_, self->placementID_};
          self->client_->unpackQueue->async([weak, unpacking, files, complete] {
            const auto isCancelled = [&] { return weak.expired() || unpacking.client->isShutDown(); };
            const auto error = unpacking.run(files, isCancelled);
            if (!weak.expired()) complete(error);
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

}  // namespace vantorium
