#include "cache/cache_client.hpp"

#include <algorithm>
#include <system_error>
#include <tuple>
#include <utility>

#include "cache/confinement.hpp"
#include "platform/foundation/async_block_operation.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

constexpr int concurrentDownloads = 50;
/// Between the name of the cache folder and a UUID: a cache of the past, about to be removed.
constexpr const char* asideMark = ".old-";

bool isPage(const fs::path& path) {
  const std::string name = path.filename().string();
  return name.ends_with(".html") || name.ends_with(".htm");
}

/// Fetches and saves one file of a batch, then ends its operation.
void download(const std::shared_ptr<FileDownloaderProtocol>& downloader, const std::shared_ptr<File>& file,
              const std::string& basePath, const std::string& pathToRemove,
              const std::shared_ptr<AsyncBlockOperation>& operation) {
  const auto source = downloader->sourceURL(file->sourcePath);
  const auto destination = downloader->destinationURL(file->sourcePath, basePath, pathToRemove);
  if (source && destination) {
    file->error = checkConfined(*destination, basePath, file->sourcePath);
  } else {
    file->error = VantoriumError::internalError();
  }
  if (file->error) {
    operation->finish();
    return;
  }
  downloader->downloadFile(*source,
                           [downloader, file, path = *destination, operation](auto data, auto error) {
                             file->error = std::move(error);
                             if (data && downloader->saveFile(*data, path)) {
                               file->isDownloaded = true;
                               file->destinationPath = path;
                             }
                             operation->finish();
                           });
}

/// Removes what stands aside of the cache, that of processes included which ended before they could.
void removeOldFolders(const fs::path& root) {
  const std::string prefix = root.filename().string() + asideMark;
  std::error_code error;
  for (fs::directory_iterator entry(root.parent_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename().string().starts_with(prefix)) fs::remove_all(entry->path(), ignored);
  }
}

/// The folder is gone at once; thousands of files are not, and the caller may be the application's main
/// thread.
void emptyFolder(const fs::path& root) {
  fs::path aside = root;
  aside += asideMark + makeUUID();
  std::error_code error;
  fs::rename(root, aside, error);
  if (error && error != std::errc::no_such_file_or_directory) fs::remove_all(root, error);
  workers::async([root] { removeOldFolders(root); });
}

}  // namespace

CacheClient::CacheClient(std::shared_ptr<SdkContext> context)
    : context_(std::move(context)),
      root_(cacheDirectoryPath(context_->host().directories())),
      dispatchQueue_(DispatchQueue::serial("CacheClientQueue")) {
  clear();
}

CacheClient::~CacheClient() = default;

fs::path CacheClient::cacheDirectoryPath(const Directories& directories) {
  return directories.caches / "com.vantorium";
}

void CacheClient::clear() {
  {
    const MutexLock lock(mutex_);
    campaignCache_.clear();
    fileCache_.clear();
    sharedFiles_.clear();
  }
  emptyFolder(root_);
}

void CacheClient::add(std::shared_ptr<Campaign> campaign, const std::string& forKey) {
  const MutexLock lock(mutex_);
  campaignCache_[forKey].campaigns.push_back(std::move(campaign));
}

int CacheClient::getNumberOfCampaigns(const std::string& forKey) const {
  const MutexLock lock(mutex_);
  const auto found = campaignCache_.find(forKey);
  if (found == campaignCache_.end()) return 0;
  return static_cast<int>(
      std::ranges::count_if(found->second.campaigns, [](const auto& campaign) { return !campaign->isUsed; }));
}

std::vector<std::shared_ptr<Campaign>> CacheClient::getCampaigns(const std::string& forKey) const {
  const MutexLock lock(mutex_);
  const auto found = campaignCache_.find(forKey);
  return found == campaignCache_.end() ? std::vector<std::shared_ptr<Campaign>>() : found->second.campaigns;
}

std::shared_ptr<Campaign> CacheClient::getNextCampaign(const std::string& forKey) const {
  const MutexLock lock(mutex_);
  const auto found = campaignCache_.find(forKey);
  if (found == campaignCache_.end()) return nullptr;
  auto& [campaigns, firstUnused] = found->second;
  while (firstUnused < campaigns.size() && campaigns[firstUnused]->isUsed) ++firstUnused;
  return firstUnused < campaigns.size() ? campaigns[firstUnused] : nullptr;
}

std::shared_ptr<Campaign> CacheClient::getCampaign(const std::string& forHash) const {
  if (forHash.empty()) return nullptr;
  const MutexLock lock(mutex_);
  for (const auto& [key, list] : campaignCache_) {
    for (const auto& campaign : list.campaigns)
      if (campaign->hash == forHash) return campaign;
  }
  return nullptr;
}

void CacheClient::add(std::shared_ptr<RewardableOffer> offer, const std::string& forKey) {
  const MutexLock lock(mutex_);
  offerCache_[forKey] = std::move(offer);
}

std::shared_ptr<RewardableOffer> CacheClient::getOffer(const std::string& forKey) const {
  const MutexLock lock(mutex_);
  const auto found = offerCache_.find(forKey);
  return found == offerCache_.end() ? nullptr : found->second;
}

std::optional<std::string> CacheClient::rewardablePopup() const {
  const MutexLock lock(mutex_);
  return rewardablePopup_;
}

void CacheClient::setRewardablePopup(std::optional<std::string> html) {
  const MutexLock lock(mutex_);
  rewardablePopup_ = std::move(html);
}

void CacheClient::shareFiles(const std::string& identifier, const std::string& ofIdentifier) {
  const std::string owner = filesIdentifier(ofIdentifier);
  const MutexLock lock(mutex_);
  sharedFiles_[identifier] = owner;
}

std::string CacheClient::filesIdentifier(const std::string& identifier) const {
  const MutexLock lock(mutex_);
  const auto found = sharedFiles_.find(identifier);
  return found == sharedFiles_.end() ? identifier : found->second;
}

bool CacheClient::hasFilesOnDisk(const std::string& forIdentifier) const {
  const auto path = getFilePath(forIdentifier);
  std::error_code ignored;
  return !path || fs::exists(*path, ignored);
}

std::string CacheClient::getFolderPath(const std::string& forIdentifier) const {
  return (root_ / filesIdentifier(forIdentifier)).string();
}

std::optional<std::string> CacheClient::getHTMLPath(const std::string& forIdentifier) const {
  std::error_code error;
  if (const fs::path index = fs::path(getFolderPath(forIdentifier)) / "index.html";
      fs::is_regular_file(fs::symlink_status(index, error))) {
    return index.string();  // a playable's: its folder may hold thousands of files
  }
  std::optional<std::tuple<int, bool, std::string>> first;
  for (fs::recursive_directory_iterator entry(getFolderPath(forIdentifier), error), end;
       !error && entry != end; entry.increment(error)) {
    // A link may lead out of the folder.
    std::error_code ignored;
    if (!isPage(entry->path()) || !fs::is_regular_file(entry->symlink_status(ignored))) continue;
    std::tuple page(entry.depth(), entry->path().filename() != "index.html", entry->path().string());
    if (!first || page < *first) first = std::move(page);
  }
  return first ? std::optional(std::get<std::string>(*first)) : std::nullopt;
}

std::optional<std::string> CacheClient::getFilePath(const std::string& forKey) const {
  const std::string owner = filesIdentifier(forKey);
  const MutexLock lock(mutex_);
  const auto found = fileCache_.find(owner);
  return found == fileCache_.end() ? std::nullopt : std::optional(found->second);
}

void CacheClient::add(const Data& data, const std::string& forKey, const std::string& fileExtension) {
  const std::string name = forKey + "." + fileExtension;
  const std::string path = (root_ / name).string();
  std::optional<Error> error = checkConfined(path, root_.string(), name);
  if (!error) {
    createDirectoryIfNeeded(root_);
    error = data.write(path);
  }
  if (error) {
    context_->logError(error->errorMessage());
    return;
  }
  const MutexLock lock(mutex_);
  fileCache_[forKey] = path;
}

void CacheClient::precacheFiles(const std::string& forIdentifier, const std::vector<std::string>& forURLs,
                                const std::string& pathToRemove,
                                std::shared_ptr<FileDownloaderProtocol> fileDownloader,
                                PrecacheCompletion completion) {
  if (forURLs.empty()) {
    completion(true, {});
    return;
  }
  const std::string basePath = (root_ / forIdentifier).string();
  const auto queue = std::make_shared<BlockOperationQueue>();
  queue->setMaxConcurrentOperationCount(concurrentDownloads);
  std::vector<std::shared_ptr<File>> files;
  std::vector<std::shared_ptr<AsyncBlockOperation>> operations;
  for (const std::string& url : forURLs) {
    files.push_back(std::make_shared<File>(url));
    operations.push_back(
        std::make_shared<AsyncBlockOperation>(queue, [=, file = files.back()](const auto& operation) {
          download(fileDownloader, file, basePath, pathToRemove, operation);
        }));
  }
  // The queue is named by its address: if its own block held it, neither would ever go.
  queue->setCompletionBlock(
      [self = shared_from_this(), name = queue.get(), files, completion = std::move(completion)] {
        self->dispatchQueue_->async([=] { self->finishBatch(name, files, completion); });
      });
  {
    const MutexLock lock(mutex_);
    downloadQueues_.push_back(queue);
  }
  queue->addOperations(operations);
}

void CacheClient::finishBatch(const BlockOperationQueue* queue,
                              const std::vector<std::shared_ptr<File>>& files,
                              const PrecacheCompletion& completion) {
  std::shared_ptr<BlockOperationQueue> ended;  // goes, with what its block captured, when no lock is held
  {
    const MutexLock lock(mutex_);
    const auto found =
        std::ranges::find_if(downloadQueues_, [queue](const auto& one) { return one.get() == queue; });
    if (found == downloadQueues_.end()) return;
    ended = std::move(*found);
    downloadQueues_.erase(found);
  }
  completion(std::ranges::all_of(files, [](const auto& file) { return file->isDownloaded; }), files);
}

}  // namespace vantorium
