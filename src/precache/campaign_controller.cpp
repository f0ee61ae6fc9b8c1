#include "precache/campaign_controller.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "archive/zip.hpp"
#include "platform/foundation/files.hpp"
#include "precache/end_card_page.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

constexpr int retries = 2;

std::uint64_t sizeOf(const fs::path& path) {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  return error ? 0 : size;
}

}  // namespace

CampaignController::CampaignController(std::shared_ptr<Campaign> campaign,
                                       std::shared_ptr<SdkContext> context, CacheClient cache,
                                       std::shared_ptr<DispatchQueue> unpackQueue, std::string placementID)
    : campaign_(std::move(campaign)),
      context_(std::move(context)),
      cache_(std::move(cache)),
      unpackQueue_(std::move(unpackQueue)),
      placementID_(std::move(placementID)) {}

void CampaignController::precache(std::shared_ptr<DispatchQueue> queue, Completion completion) {
  queue_ = std::move(queue);
  completion_ = std::move(completion);
  std::shared_ptr<const StoredPath> film;
  for (const auto& earlier : cache_.files->shelf().find(*campaign_)) {
    if (earlier->hasPageOf(*campaign_)) return completion_(earlier);
    if (!isPlayable()) film = earlier->film;
  }
  auto plan = CreativePlan::make(*campaign_, *cache_.files, film != nullptr);
  if (!plan) {
    context_->logError(plan.error()->errorMessage());
    return complete(*plan.error());
  }
  plan_ = std::move(*plan);
  if (film) plan_.film = std::move(film);
  files_.resize(plan_.downloads.size());
  attempt();
}

/// Fetches what is missing.
void CampaignController::attempt() {
  context_->printLog((isPlayable() ? "Trying to precache HTML files for placement id: "
                                   : "Trying to precache video and endcard for placement id: ") +
                     placementID_);
  std::vector<Download> missing;
  for (std::size_t index = 0; index < files_.size(); ++index) {
    if (!files_[index]) missing.push_back(plan_.downloads[index]);
  }
  cache_.downloads->precacheFiles(
      std::move(missing), [self = shared_from_this()](const auto& files) { self->didDownload(files); });
}

void CampaignController::didDownload(const std::vector<Result<File>>& files) {
  std::optional<Error> failure;
  auto result = files.begin();
  for (auto& file : files_) {
    if (file) continue;
    if (*result) {
      file = **result;
    } else if (!failure) {
      failure = result->error();
    }
    ++result;
  }
  if (failure) return didFailToDownload(*failure);
  if (!isPlayable()) return finish();
  // Not here: other batches end on this queue, and a large archive takes its time.
  unpackQueue_->async([self = shared_from_this()] { self->finish(); });
}

void CampaignController::didFailToDownload(const Error& error) {
  if (FileDownloader::isWorthAnotherTry(error) && tryCounter_ < retries) {
    ++tryCounter_;
    queue_ = nullptr;
    return attempt();
  }
  if (!isPlayable()) return complete(error);
  complete(VantoriumError::internalError("Can't precache or save files. " + error.localizedDescription()));
}

void CampaignController::finish() {
  auto error = preparePage();
  if (error && cache_.files->shelf().makeRoom(*error)) error = preparePage();
  if (error) {
    context_->logError(error->errorMessage());
    return complete(*error);
  }
  if (isPlayable()) {
    context_->printLog("HTML files successufully downloaded and saved to disk for placement id: " +
                       placementID_);
  } else {
    context_->printLog(fmt::format("Video successufully downloaded. Size {}KB  Placement id: {}",
                                   sizeOf(plan_.film->path()) / 1024, placementID_));
    context_->printLog("Video successufully saved to disk for placement id: " + placementID_);
    if (plan_.folder) {
      context_->printLog("End card HTML files successufully downloaded and saved to disk for placement id: " +
                         placementID_);
    }
  }
  auto creative = makeCreative();
  cache_.files->shelf().add(creative);
  complete(std::move(creative));
}

std::optional<Error> CampaignController::preparePage() {
  return isPlayable() ? unpack() : updateHTMLWithRelativeAssets();
}

std::optional<Error> CampaignController::unpack() {
  const auto count = [this](const fs::path& file) {
    unpackedBytes_ += sizeOf(file);
    directories_.insert(file.parent_path());
  };
  const fs::path archive = plan_.archive;
  const auto isCancelled = [this] { return context_->hasEnded(); };
  const auto unzip = [&] {
    unpackedBytes_ = 0;
    directories_.clear();
    return Zip::unzipFile(archive, archive.parent_path(), true, {}, {}, count, {}, isCancelled);
  };
  auto failure = unzip();
  if (failure && cache_.files->shelf().makeRoom(posixError(failure->systemCode(), "write", archive)))
    failure = unzip();
  if (failure) return *failure;
  // It takes the place of a page of that name from the archive.
  return writeFileAtomically(*plan_.page, "<html><body>" + campaign_->tag + "</body></html>");
}

std::optional<Error> CampaignController::updateHTMLWithRelativeAssets() const {
  if (!plan_.page) return std::nullopt;
  std::optional<std::string> local;
  if (sizeOf(*plan_.page) <= largestPage) {
    std::optional<Error> error;
    const auto page = readTextFile(*plan_.page, error);
    // A page in another encoding stays as it is: its addresses may lead to the network.
    if (!page) return error->code() == EILSEQ ? std::nullopt : error;
    local = pageWithRelativeAssets(*page, plan_.pageAddresses, campaign_->customImage);
  }
  if (local) return writeFileAtomically(*plan_.page, *local);
  context_->logError(fmt::format(
      "Can't let the end card's page refer to the files on disk: it has more than {} bytes.", largestPage));
  return std::nullopt;
}

std::shared_ptr<const Creative> CampaignController::makeCreative() {
  auto creative = std::make_shared<Creative>();
  creative->record = campaign_;
  creative->film = plan_.film;
  creative->folder = plan_.folder;
  creative->page = plan_.page;
  creative->filmBytes = plan_.film ? sizeOf(plan_.film->path()) : 0;
  creative->folderBytes = unpackedBytes_;
  for (const auto& file : files_) {
    const bool isFilm = plan_.film && file->destinationPath == plan_.film->path();
    creative->answers.push_back(file->answer);
    if (isFilm) continue;
    creative->folderBytes += file->answer.bytes;
    directories_.insert(fs::path(file->destinationPath).parent_path());
  }
  for (const fs::path& each : directories_) {
    std::error_code error;
    creative->directories.push_back({each.string(), fs::last_write_time(each, error)});
  }
  return creative;
}

void CampaignController::complete(Outcome outcome) const {
  context_->onQueue(queue_,
                    [completion = completion_, outcome = std::move(outcome)] { completion(outcome); });
}

}  // namespace vantorium
