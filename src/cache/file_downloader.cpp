#include "cache/file_downloader.hpp"

#include <curl/curl.h>
#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "platform/foundation/files.hpp"
#include "platform/foundation/gather.hpp"

namespace vantorium {

namespace {

constexpr int concurrentDownloads = 50;
constexpr int firstFailure = 400;

/// For people to read: what follows a "?" may tell who the user is, and nobody needs it there.
std::string shown(const std::string& url) { return url.substr(0, url.find('?')); }

/// What is wrong with an answer that arrived whole, if anything is.
std::optional<Error> flawOf(const HTTPAnswer& answer, const std::string& url, bool mayBeEmpty) {
  if (answer.error) return answer.error;
  if (answer.status >= firstFailure) {
    return Error::platform(
        "http", answer.status,
        fmt::format("The server answered {} for {}. Serve the file there.", answer.status, shown(url)));
  }
  if (answer.body->size() > 0 || mayBeEmpty) return std::nullopt;
  return Error::platform("http", answer.status,
                         fmt::format("The server answered {} without a byte for {}. Serve the file there.",
                                     answer.status, shown(url)));
}

std::optional<Error> saveFile(const Data& data, const std::filesystem::path& destination) {
  if (auto error = createDirectoryIfNeeded(destination.parent_path())) return error;
  return data.write(destination);
}

}  // namespace

FileDownloader::FileDownloader(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session,
                               std::shared_ptr<FileStore> files)
    : context_(std::move(context)),
      session_(std::move(session)),
      files_(std::move(files)),
      dispatchQueue_(DispatchQueue::serial("CacheClientQueue")) {}

bool FileDownloader::isWorthAnotherTry(const Error& error) {
  if (error.domain() == "http") return true;
  if (error.domain() != "curl") return false;
  switch (error.code()) {
    case CURLE_ABORTED_BY_CALLBACK:
    case CURLE_FILESIZE_EXCEEDED:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
    case CURLE_TOO_MANY_REDIRECTS:
      return false;
    default:
      return true;
  }
}

void FileDownloader::report(const std::string& url, const Error& error) const {
  context_->logError(fmt::format("Can't download file from: {} {}", shown(url), error.errorMessage()));
}

void FileDownloader::downloadFile(const Download& download, FileCompletion completion) {
  fetch(download,
        [self = shared_from_this(), download, completion = std::move(completion)](Result<File> file) {
          if (!file && self->files_->shelf().makeRoom(*file.error())) {
            self->fetch(download, completion);
          } else {
            completion(std::move(file));
          }
        });
}

void FileDownloader::fetch(const Download& download, FileCompletion completion) {
  HTTPRequest request;
  request.url = download.url;
  session_->send(std::move(request), [self = shared_from_this(), download, completion = std::move(completion),
                                      task = context_->host().beginBackgroundTask()](HTTPAnswer answer) {
    auto error = flawOf(answer, download.url, download.mayBeEmpty);
    if (!error) error = saveFile(*answer.body, download.destinationPath);
    if (error) {
      answer.body.reset();  // with its file: whoever hears of the failure finds no trace
      completion(*error);
      self->report(download.url, *error);
      return;
    }
    completion(File{download.sourcePath,
                    download.destinationPath,
                    {download.url, answer.status, std::move(answer.contentType), answer.body->size()}});
  });
}

void FileDownloader::precacheFiles(std::vector<Download> downloads, FilesCompletion completion) {
  using Outcome = Result<File>;
  gather<Outcome, Download>(
      std::move(downloads), concurrentDownloads,
      VantoriumError::internalError("The work was dropped. Try again."),
      [self = shared_from_this()](const Download& download, std::function<void(Outcome)> ended) {
        self->downloadFile(download, std::move(ended));
      },
      [queue = dispatchQueue_, completion = std::move(completion)](std::vector<Outcome> files) {
        if (files.empty()) return completion({});
        queue->async([completion, files = std::move(files)] { completion(files); });
      });
}

std::shared_ptr<void> FileDownloader::downloadData(const std::string& fromURL, std::uint64_t mostBytes,
                                                   DataCompletion completion) {
  HTTPRequest request;
  request.url = fromURL;
  request.mostBodyBytes = mostBytes;
  const std::uint64_t exchange =
      session_->send(std::move(request), [fromURL, completion = std::move(completion)](HTTPAnswer answer) {
        if (const auto error = flawOf(answer, fromURL, false)) return completion(*error);
        completion(std::move(*answer.body));
      });
  return {nullptr, [session = session_, exchange](void*) { session->cancel(exchange); }};
}

}  // namespace vantorium
