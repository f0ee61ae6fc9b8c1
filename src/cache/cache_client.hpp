#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>

#include "cache/file.hpp"
#include "cache/file_downloader.hpp"
#include "context/sdk_context.hpp"
#include "model/campaign.hpp"
#include "model/rewardable_offer.hpp"
#include "platform/foundation/data.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

class BlockOperationQueue;

/// Everything that is precached: the campaigns and the offer of each placement, in memory, and their files in
/// the cache folder, which is emptied when the client is made. Any thread.
///
/// Files are kept by identifier: one folder, and at most one saved blob beside it, for each. A campaign whose
/// creative is on disk already shares the files of the earlier one, see `shareFiles`; every lookup follows
/// that.
class CacheClient : public std::enable_shared_from_this<CacheClient> {
 public:
  using PrecacheCompletion = std::function<void(bool success, std::vector<std::shared_ptr<File>> files)>;

  explicit CacheClient(std::shared_ptr<SdkContext> context);
  ~CacheClient();
  CacheClient(const CacheClient&) = delete;
  CacheClient& operator=(const CacheClient&) = delete;

  /// Where an application's cache lies.
  static std::filesystem::path cacheDirectoryPath(const Directories& directories);

  /// Forgets campaigns and files and empties the folder. The files themselves are removed later, on a worker.
  void clear() EXCLUDES(mutex_);

  void add(std::shared_ptr<Campaign> campaign, const std::string& forKey) EXCLUDES(mutex_);
  /// How many campaigns of the key have not been shown.
  int getNumberOfCampaigns(const std::string& forKey) const EXCLUDES(mutex_);
  /// Whether there is one that has not been shown; quick whatever their number.
  bool hasNextCampaign(const std::string& forKey) const { return getNextCampaign(forKey) != nullptr; }
  /// All campaigns of the key, shown or not, in the order added.
  std::vector<std::shared_ptr<Campaign>> getCampaigns(const std::string& forKey) const EXCLUDES(mutex_);
  /// The first that has not been shown, or null. It is not marked here.
  std::shared_ptr<Campaign> getNextCampaign(const std::string& forKey) const EXCLUDES(mutex_);
  /// The first campaign, under any key, of that hash, or null. An empty hash is nobody's.
  std::shared_ptr<Campaign> getCampaign(const std::string& forHash) const EXCLUDES(mutex_);

  /// Keeps the offer of the key's popup; a later one takes its place. `clear` leaves it.
  void add(std::shared_ptr<RewardableOffer> offer, const std::string& forKey) EXCLUDES(mutex_);
  /// The offer of the key's popup, or null.
  std::shared_ptr<RewardableOffer> getOffer(const std::string& forKey) const EXCLUDES(mutex_);
  /// The template of rewardable popups; none until the service has sent one. `clear` leaves it.
  std::optional<std::string> rewardablePopup() const EXCLUDES(mutex_);
  void setRewardablePopup(std::optional<std::string> html) EXCLUDES(mutex_);

  /// Lets `identifier` stand for the files of `ofIdentifier` from now on.
  void shareFiles(const std::string& identifier, const std::string& ofIdentifier) EXCLUDES(mutex_);
  /// Whether the blob saved for the identifier is still on disk (others may empty the folder at any time);
  /// true as well when none was saved.
  bool hasFilesOnDisk(const std::string& forIdentifier) const EXCLUDES(mutex_);
  /// The folder of the identifier's files: what its page may read. It need not exist.
  std::string getFolderPath(const std::string& forIdentifier) const EXCLUDES(mutex_);
  /// The page (".html" or ".htm") in the identifier's folder that is nearest to its top: an "index.html"
  /// before others, these in the order of their paths.
  std::optional<std::string> getHTMLPath(const std::string& forIdentifier) const EXCLUDES(mutex_);
  /// The blob saved under the key.
  std::optional<std::string> getFilePath(const std::string& forKey) const EXCLUDES(mutex_);

  /// Saves a blob. A failure is reported to the service; the key then has no file.
  void add(const Data& data, const std::string& forKey, const std::string& fileExtension) EXCLUDES(mutex_);

  /// Downloads files into the identifier's folder, up to fifty at a time. The completion is called once, with
  /// the files in the order of the URLs and true if all are on disk: at once for no URLs, else on the cache's
  /// own queue. A file whose path would leave the folder is refused with an error. The batch keeps the cache
  /// alive.
  void precacheFiles(const std::string& forIdentifier, const std::vector<std::string>& forURLs,
                     const std::string& pathToRemove, std::shared_ptr<FileDownloaderProtocol> fileDownloader,
                     PrecacheCompletion completion) EXCLUDES(mutex_);

 private:
  struct CampaignList {
    std::vector<std::shared_ptr<Campaign>> campaigns;
    std::size_t firstUnused = 0;  ///< all before it have been shown
  };

  std::string filesIdentifier(const std::string& identifier) const EXCLUDES(mutex_);
  void finishBatch(const BlockOperationQueue* queue, const std::vector<std::shared_ptr<File>>& files,
                   const PrecacheCompletion& completion) EXCLUDES(mutex_);

  const std::shared_ptr<SdkContext> context_;
  const std::filesystem::path root_;
  const std::shared_ptr<DispatchQueue> dispatchQueue_;
  mutable Mutex mutex_;
  std::vector<std::shared_ptr<BlockOperationQueue>> downloadQueues_ GUARDED_BY(mutex_);
  mutable std::map<std::string, CampaignList> campaignCache_ GUARDED_BY(mutex_);
  std::map<std::string, std::shared_ptr<RewardableOffer>> offerCache_ GUARDED_BY(mutex_);
  std::optional<std::string> rewardablePopup_ GUARDED_BY(mutex_);
  std::map<std::string, std::string> fileCache_ GUARDED_BY(mutex_);
  std::map<std::string, std::string> sharedFiles_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
