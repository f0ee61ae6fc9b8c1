#include "precache/native_ad_controller.hpp"

#include <algorithm>
#include <map>
#include <unordered_set>
#include <utility>

#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

/// Keeps the files of one ad apart: a file whose URL has the same path as another's (on two hosts, or with
/// two queries), or a path that leads through another's, goes into a folder of its own.
class DistinctFiles final : public FileDownloaderProtocol {
 public:
  DistinctFiles(std::shared_ptr<FileDownloaderProtocol> downloader, const std::vector<std::string>& urls)
      : downloader_(std::move(downloader)) {
    std::unordered_set<std::string> files, folders;
    for (const std::string& url : urls) {
      const std::string file = downloader_->destinationURL(url, "", "").value_or("");
      std::vector<std::string> above;
      for (auto slash = file.rfind('/'); slash != std::string::npos && slash > 0;
           slash = file.rfind('/', slash - 1))
        above.push_back(file.substr(0, slash));
      const bool isApart = !files.contains(file) && !folders.contains(file) &&
                           std::ranges::none_of(above, [&](const auto& one) { return files.contains(one); });
      if (isApart) {
        files.insert(file);
        folders.insert(above.begin(), above.end());
      } else {
        folders_[url] = "/" + makeUUID();
      }
    }
  }

  void downloadFile(const URL& sourceURL, Completion completion) override {
    downloader_->downloadFile(sourceURL, std::move(completion));
  }
  bool saveFile(const Data& data, const std::string& destinationPath) override {
    return downloader_->saveFile(data, destinationPath);
  }
  std::optional<std::string> destinationURL(const std::string& sourcePath, const std::string& basePath,
                                            const std::string& pathToRemove) override {
    const auto folder = folders_.find(sourcePath);
    return downloader_->destinationURL(
        sourcePath, folder == folders_.end() ? basePath : basePath + folder->second, pathToRemove);
  }
  std::optional<URL> sourceURL(const std::string& sourcePath) override {
    return downloader_->sourceURL(sourcePath);
  }

 private:
  const std::shared_ptr<FileDownloaderProtocol> downloader_;
  std::map<std::string, std::string> folders_;  ///< by URL; only read once made
};

}  // namespace

NativeAdController::NativeAdController(std::shared_ptr<VantoriumNativeAd> nativeAd,
                                       std::shared_ptr<Client> client)
    : nativeAd_(std::move(nativeAd)), client_(std::move(client)) {}

void NativeAdController::precache(const std::shared_ptr<DispatchQueue>& queue, Completion completion) {
  const auto complete = [context = client_->context, queue,
                         completion = std::move(completion)](const std::optional<Error>& error) {
    context->onQueue(queue, [completion, error] { completion(!error, error); });
  };
  const auto wanted = urls();
  // A folder of our own naming: an identifier from the network would be a path from the network.
  client_->cacheClient->precacheFiles(
      makeUUID(), wanted, "", std::make_shared<DistinctFiles>(client_->fileDownloader, wanted),
      [weak = weak_from_this(), complete](bool, const std::vector<std::shared_ptr<File>>& files) {
        const auto self = weak.lock();
        complete(self ? self->record(files) : VantoriumError::internalError(""));
      });
}

/// What is to be fetched, in the order in which failures count; each once, lest two downloads write one file.
std::vector<std::string> NativeAdController::urls() const {
  std::vector<std::string> all;
  std::unordered_set<std::string> known;
  const auto add = [&](const std::string& url) {
    if (known.insert(url).second) all.push_back(url);
  };
  for (const auto& asset : nativeAd_->assets) add(asset->URL);
  add(nativeAd_->appIconURL);
  return all;
}

std::optional<Error> NativeAdController::record(const std::vector<std::shared_ptr<File>>& files) const {
  for (const auto& file : files) {
    if (file->error) return file->error;
    if (!file->isDownloaded) continue;
    for (const auto& asset : nativeAd_->assets) {
      if (asset->URL != file->sourcePath) continue;
      asset->filePath = file->destinationPath;
      asset->internalFilePath = file->destinationPath;
    }
    if (nativeAd_->appIconURL == file->sourcePath) nativeAd_->appIconFilePath = file->destinationPath;
  }
  return std::nullopt;
}

}  // namespace vantorium
