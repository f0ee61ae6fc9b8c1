#include "cache/download.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "cache/confinement.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

constexpr std::size_t longestShown = 300;

/// The record's mistake, which no other try would mend.
Error flawOf(const std::string& field, const std::string& sourcePath, const char* flaw) {
  return VantoriumError::internalError(fmt::format("The ad's \"{}\" {}: \"{}\". Give the address of a file.",
                                                   field, flaw, sourcePath.substr(0, longestShown)));
}

/// The part of a file's path that says on which folders it depends: each folder above it.
std::vector<std::string> foldersAbove(const std::string& file) {
  std::vector<std::string> above;
  for (auto slash = file.rfind('/'); slash != std::string::npos && slash > 0;
       slash = file.rfind('/', slash - 1))
    above.push_back(file.substr(0, slash));
  return above;
}

}  // namespace

Result<Download> planDownload(const std::string& field, const std::string& sourcePath,
                              const std::string& basePath, const std::string& pathToRemove) {
  const auto encoded = urlEncodedString(sourcePath);
  const auto url = encoded ? URL::parse(*encoded) : std::nullopt;
  if (sourcePath.empty()) return flawOf(field, sourcePath, "is missing or empty");
  if (!url) return flawOf(field, sourcePath, "is no address");
  if (url->path().empty() || url->path().ends_with('/')) return flawOf(field, sourcePath, "names no file");
  std::string path = basePath + url->path();
  if (const auto at = path.find(pathToRemove); at != std::string::npos) path.erase(at, pathToRemove.size());
  if (auto error = checkConfined(path, basePath, fmt::format("the ad's \"{}\"", field))) return *error;
  return Download{.sourcePath = sourcePath, .url = url->absoluteString(), .destinationPath = std::move(path)};
}

std::vector<Result<Download>> planDistinctDownloads(const std::vector<Wanted>& wanted,
                                                    const std::string& basePath) {
  std::vector<Result<Download>> plans;
  std::unordered_set<std::string> files, folders;
  for (const auto& [field, sourcePath] : wanted) {
    auto plan = planDownload(field, sourcePath, basePath);
    if (plan) {
      const std::string& file = plan->destinationPath;
      const auto above = foldersAbove(file);
      const bool isApart = !files.contains(file) && !folders.contains(file) &&
                           std::ranges::none_of(above, [&](const auto& one) { return files.contains(one); });
      if (isApart) {
        files.insert(file);
        folders.insert(above.begin(), above.end());
      } else {
        plan = planDownload(field, sourcePath, basePath + "/" + makeUUID());
      }
    }
    plans.push_back(std::move(plan));
  }
  return plans;
}

Result<Download> planFileDownload(const std::string& field, const std::string& sourcePath,
                                  const std::string& destinationPath, const std::string& basePath) {
  if (sourcePath.empty()) return flawOf(field, sourcePath, "is missing or empty");
  if (!URL::parse(sourcePath)) return flawOf(field, sourcePath, "is no address");
  if (auto error = checkConfined(destinationPath, basePath, fmt::format("the ad's \"{}\"", field)))
    return *error;
  return Download{
      .sourcePath = sourcePath, .url = sourcePath, .destinationPath = destinationPath, .mayBeEmpty = false};
}

}  // namespace vantorium
