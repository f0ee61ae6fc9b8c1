#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>

#include "cache/creative.hpp"
#include "cache/download.hpp"
#include "cache/file_store.hpp"
#include "context/sdk_context.hpp"
#include "platform/foundation/data.hpp"
#include "platform/foundation/result.hpp"
#include "platform/net/http_session.hpp"

namespace vantorium {

/// A file that has been fetched: all its bytes are at `destinationPath`.
struct File {
  std::string sourcePath;
  std::string destinationPath;
  Answer answer;
};

/// The one door through which the files of ads come: films, pages, archives, pictures. One set of rules holds
/// for all: the limits of the session, and an answer with a status of 400 or more is a failure, of domain
/// "http" with that status as its code. Failures are reported to the service. Any thread.
class FileDownloader : public std::enable_shared_from_this<FileDownloader> {
 public:
  using FileCompletion = std::function<void(Result<File> file)>;
  using FilesCompletion = std::function<void(std::vector<Result<File>> files)>;
  using DataCompletion = std::function<void(Result<Data> data)>;

  FileDownloader(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session,
                 std::shared_ptr<FileStore> files);

  /// Whether a download that failed so may succeed the next time: not so when the disk is full, the exchange
  /// was cancelled or the answer is too large.
  static bool isWorthAnotherTry(const Error& error);

  /// Fetches a file and puts it in its place, at once and whole. When the disk is full it is tried once more,
  /// if something can be given up for it. The completion is called once, on the session's callback queue; an
  /// error is that of the network, of the server or of the disk (domain "posix").
  void downloadFile(const Download& download, FileCompletion completion);
  /// Fetches several, up to fifty at a time, begun in their order. The completion is called once, with one
  /// result for each in the same order: at once for none, else on the cache's own queue.
  void precacheFiles(std::vector<Download> downloads, FilesCompletion completion);
  /// Fetches what is at the address, at most so many bytes, as long as it is wanted: dropping the returned
  /// task cancels it. The completion is called once in any case, on the session's callback queue.
  [[nodiscard]] std::shared_ptr<void> downloadData(const std::string& fromURL, std::uint64_t mostBytes,
                                                   DataCompletion completion);

 private:
  void fetch(const Download& download, FileCompletion completion);
  void report(const std::string& url, const Error& error) const;

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPSession> session_;
  const std::shared_ptr<FileStore> files_;
  const std::shared_ptr<DispatchQueue> dispatchQueue_;
};

}  // namespace vantorium
