#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "context/sdk_context.hpp"
#include "platform/foundation/data.hpp"
#include "platform/foundation/url.hpp"
#include "platform/net/http_session.hpp"

namespace vantorium {

/// How the cache fetches a file and where it puts it. Any thread.
class FileDownloaderProtocol {
 public:
  using Completion = std::function<void(std::optional<Data> data, std::optional<Error> error)>;

  virtual ~FileDownloaderProtocol() = default;

  /// Fetches the bytes. The completion is called once, with exactly one of the two.
  virtual void downloadFile(const URL& sourceURL, Completion completion) = 0;
  /// Writes the bytes, creating the folders on the way; whether the file is there whole.
  virtual bool saveFile(const Data& data, const std::string& destinationPath) = 0;
  /// The absolute path where a file is stored: `basePath` followed by the URL's path, without the first
  /// occurrence of `pathToRemove`. None when the source is not a URL. It is for the cache to check where it
  /// leads.
  virtual std::optional<std::string> destinationURL(const std::string& sourcePath,
                                                    const std::string& basePath,
                                                    const std::string& pathToRemove) = 0;
  /// The URL to fetch; none when the source is not one.
  virtual std::optional<URL> sourceURL(const std::string& sourcePath) = 0;
};

/// Downloads over HTTP. Completions arrive on the session's callback queue.
class FileDownloader : public FileDownloaderProtocol {
 public:
  FileDownloader(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session);

  void downloadFile(const URL& sourceURL, Completion completion) override;
  bool saveFile(const Data& data, const std::string& destinationPath) override;
  std::optional<std::string> destinationURL(const std::string& sourcePath, const std::string& basePath,
                                            const std::string& pathToRemove) override;
  std::optional<URL> sourceURL(const std::string& sourcePath) override;

 private:
  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPSession> session_;
};

}  // namespace vantorium
