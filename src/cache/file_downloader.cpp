#include "cache/file_downloader.hpp"

#include <fmt/format.h>

#include <filesystem>

#include "platform/foundation/files.hpp"

namespace vantorium {

FileDownloader::FileDownloader(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session)
    : context_(std::move(context)), session_(std::move(session)) {}

void FileDownloader::downloadFile(const URL& sourceURL, Completion completion) {
  const std::string& url = sourceURL.absoluteString();
  HTTPRequest request;
  request.url = url;
  session_->send(std::move(request), [context = context_, url, completion = std::move(completion)](
                                         auto data, auto error) {
    completion(std::move(data), error);
    if (error) context->logError(fmt::format("Can't download file from: {} {}", url, error->errorMessage()));
  });
}

bool FileDownloader::saveFile(const Data& data, const std::string& destinationPath) {
  const std::filesystem::path path(destinationPath);
  createDirectoryIfNeeded(path.parent_path());
  return !data.write(path);
}

std::optional<std::string> FileDownloader::destinationURL(const std::string& sourcePath,
                                                          const std::string& basePath,
                                                          const std::string& pathToRemove) {
  const auto url = sourceURL(sourcePath);
  if (!url) return std::nullopt;
  std::string path = basePath + url->path();
  if (const auto at = path.find(pathToRemove); at != std::string::npos) path.erase(at, pathToRemove.size());
  return path;
}

std::optional<URL> FileDownloader::sourceURL(const std::string& sourcePath) {
  const auto encoded = urlEncodedString(sourcePath);
  return encoded ? URL::parse(*encoded) : std::nullopt;
}

}  // namespace vantorium
