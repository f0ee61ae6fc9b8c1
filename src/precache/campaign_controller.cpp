#include "precache/campaign_controller.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/foundation/files.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/foundation/url.hpp"
#include "precache/end_card_page.hpp"

namespace vantorium {

namespace {

constexpr std::size_t mostEndCardFiles = 500;

}  // namespace

/// Branches that run at the same time, and what becomes of them: `done` is called once, by the last to leave,
/// with an error that one of them met.
class CampaignController::Group {
 public:
  Group(int branches, std::function<void(std::optional<Error>)> done)
      : branches_(branches), done_(std::move(done)) {}

  void leave(std::optional<Error> error) EXCLUDES(mutex_) {
    {
      const MutexLock lock(mutex_);
      if (error) error_ = std::move(error);
      if (--branches_ > 0) return;
      error = error_;
    }
    done_(std::move(error));
  }

 private:
  Mutex mutex_;
  int branches_ GUARDED_BY(mutex_);
  std::optional<Error> error_ GUARDED_BY(mutex_);
  const std::function<void(std::optional<Error>)> done_;
};

CampaignController::CampaignController(std::shared_ptr<Campaign> campaign, std::shared_ptr<Client> client,
                                       std::string placementID)
    : campaign_(std::move(campaign)), client_(std::move(client)), placementID_(std::move(placementID)) {}

void CampaignController::precache(const std::shared_ptr<DispatchQueue>& queue, Completion completion) {
  CacheClient& cache = *client_->cacheClient;
  const auto earlier = cache.getCampaign(campaign_->hash);
  // Others may have emptied the cache folder since.
  const auto isOnDisk = [&cache](const Campaign& campaign) {
    return campaign.type == "playable" ? cache.getHTMLPath(campaign.identifier).has_value()
                                       : cache.hasFilesOnDisk(campaign.identifier);
  };
  if (earlier && isOnDisk(*earlier)) {
    cache.shareFiles(campaign_->identifier, earlier->identifier);
    completion(true, std::nullopt);
    return;
  }
  if (campaign_->type == "playable") {
    precachePlayable(queue, 0, completion);
    return;
  }
  if (const auto error = refusal()) {
    client_->context->logError(error->errorMessage());
    client_->context->onQueue(queue,
                              [completion = std::move(completion), error] { completion(false, error); });
    return;
  }
  precacheRewardableVideo(queue, 0, completion);
}

/// Why the campaign cannot be precached, however often it is tried.
std::optional<Error> CampaignController::refusal() const {
  const std::size_t files = hasEndCard() ? campaign_->endAssets.front().size() : 0;
  if (files <= mostEndCardFiles) return std::nullopt;
  return VantoriumError::internalError(fmt::format(
      "Can't precache the end card: it has {} files, and at most {} are taken. Serve fewer files.", files,
      mostEndCardFiles));
}

bool CampaignController::hasEndCard() const {
  return !campaign_->endAssets.empty() && !campaign_->endURL.empty();
}

void CampaignController::precacheRewardableVideo(const std::shared_ptr<DispatchQueue>& queue, int tryCounter,
                                                 const Completion& completion) {
  client_->context->printLog("Trying to precache video and endcard for placement id: " + placementID_);
  const auto ended = [weak = weak_from_this(), queue, tryCounter,
                      completion](const std::optional<Error>& error) {
    const auto self = weak.lock();
    if (!self) return;
    if (error && tryCounter < retries) {
      self->precacheRewardableVideo(nullptr, tryCounter + 1, completion);
    } else {
      completion(!error, error);
    }
  };
  const auto group = std::make_shared<Group>(
      hasEndCard() ? 2 : 1, [context = client_->context, queue, ended](std::optional<Error> error) {
        context->onQueue(queue, [ended, error = std::move(error)] { ended(error); });
      });
  precacheVideo(group);
  if (hasEndCard()) precacheEndCard(group);
}

void CampaignController::precacheVideo(const std::shared_ptr<Group>& group) {
  client_->httpClient->downloadFile(campaign_->videoURL,
                                    [weak = weak_from_this(), group](auto data, auto error) {
                                      const auto self = weak.lock();
                                      if (!self) return;
                                      if (data) {
                                        self->saveVideo(*data);
                                      } else {
                                        self->client_->context->logError(error->errorMessage());
                                      }
                                      group->leave(std::move(error));
                                    });
}

void CampaignController::saveVideo(const Data& data) const {
  const auto url = URL::parse(campaign_->videoURL);
  client_->context->printLog(fmt::format("Video successufully downloaded. Size {}KB  Placement id: {}",
                                         data.size() / 1024, placementID_));
  client_->cacheClient->add(data, campaign_->identifier, url ? url->pathExtension() : "");
  client_->context->printLog("Video successufully saved to disk for placement id: " + placementID_);
}

void CampaignController::precacheEndCard(const std::shared_ptr<Group>& group) {
  std::vector<std::string> urls = campaign_->endAssets.front();
  urls.push_back(campaign_->customImage);
  urls.push_back(campaign_->endURL.front());
  client_->cacheClient->precacheFiles(
      campaign_->identifier, urls, "", client_->fileDownloader,
      [weak = weak_from_this(), group, urls](bool success, const std::vector<std::shared_ptr<File>>& files) {
        const auto self = weak.lock();
        if (!self) return;
        if (success) self->finishEndCard(urls);
        const auto failed =
            std::ranges::find_if(files, [](const auto& file) { return file->error.has_value(); });
        group->leave(failed == files.end() ? std::nullopt : (*failed)->error);
      });
}

void CampaignController::finishEndCard(const std::vector<std::string>& urls) const {
  updateHTMLWithRelativeAssets(campaign_->identifier, urls, campaign_->customImage);
  client_->context->printLog(
      "End card HTML files successufully downloaded and saved to disk for placement id: " + placementID_);
}

void CampaignController::updateHTMLWithRelativeAssets(const std::string& forIndetifier,
                                                      const std::vector<std::string>& assestURLs,
                                                      const std::string& customImage) const {
  const auto path = client_->cacheClient->getHTMLPath(forIndetifier);
  if (!path) return;
  std::optional<std::string> local;
  std::error_code unknown;
  if (std::filesystem::file_size(*path, unknown) <= largestPage) {
    std::optional<Error> ignored;
    const auto page = readTextFile(*path, ignored);
    if (!page) return;
    local = pageWithRelativeAssets(*page, assestURLs, customImage);
  }
  if (local) {
    writeFileAtomically(*path, *local);
  } else {
    client_->context->logError(fmt::format(
        "Can't let the end card's page refer to the files on disk: it has more than {} bytes.", largestPage));
  }
}

}  // namespace vantorium
