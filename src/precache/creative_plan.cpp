#include "precache/creative_plan.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

constexpr std::size_t mostEndCardFiles = 500;

bool isPage(const std::string& path) { return path.ends_with(".html") || path.ends_with(".htm"); }

/// The part of the archive's path that its folder on disk does without; the slash after it stays.
std::string playablePathToRemove(const Campaign& campaign) {
  const auto base = URL::parse(campaign.baseURL);
  std::string path = base ? base->path() : std::string{};
  while (path.ends_with('/')) path.pop_back();
  return path;
}

/// Adds a download that must succeed; its error, if the record is wrong.
std::optional<Error> add(CreativePlan& plan, Result<Download> download) {
  if (!download) return download.error();
  plan.downloads.push_back(std::move(*download));
  return std::nullopt;
}

std::optional<Error> addArchive(CreativePlan& plan, const Campaign& campaign) {
  const std::string& folder = plan.folder->path();
  auto download = planDownload("zippedUrl", campaign.zippedURL, folder, playablePathToRemove(campaign));
  if (!download) return download.error();
  download->mayBeEmpty = false;
  plan.archive = download->destinationPath;
  plan.page = folder + "/index.html";
  return add(plan, std::move(download));
}

std::optional<Error> addFilm(CreativePlan& plan, const Campaign& campaign, const FileStore& files) {
  const auto url = URL::parse(campaign.videoURL);
  const std::string extension = url ? url->pathExtension() : "";
  plan.film = files.claim(campaign.identifier + "." + extension);
  return add(plan, planFileDownload("videoUrl", campaign.videoURL, plan.film->path(), files.root().string()));
}

/// The page that opens: what the record names, if that is one; else the one nearest to the top of the folder,
/// an "index.html" before others, these in the order of their paths.
std::optional<std::string> openingPage(const std::vector<std::string>& paths) {
  if (isPage(paths.back())) return paths.back();
  std::optional<std::tuple<std::ptrdiff_t, bool, std::string>> first;
  for (const std::string& path : paths) {
    if (!isPage(path)) continue;
    std::tuple page(std::ranges::count(path, '/'), !path.ends_with("/index.html"), path);
    if (!first || page < *first) first = std::move(page);
  }
  return first ? std::optional(std::get<std::string>(*first)) : std::nullopt;
}

std::optional<Error> addEndCard(CreativePlan& plan, const Campaign& campaign) {
  const auto& assets = campaign.endAssets.front();
  if (assets.size() > mostEndCardFiles) {
    return VantoriumError::internalError(fmt::format(
        "Can't precache the end card: it has {} files, and at most {} are taken. Serve fewer files.",
        assets.size(), mostEndCardFiles));
  }
  std::vector<Wanted> wanted;
  for (const auto& asset : assets) wanted.push_back({"endAssets", asset});
  wanted.push_back({"customImage", campaign.customImage});
  wanted.push_back({"endUrl", campaign.endURL.front()});
  std::vector<std::string> paths;
  for (const auto& [field, sourcePath] : wanted) {
    if (auto error = add(plan, planDownload(field, sourcePath, plan.folder->path()))) return error;
    paths.push_back(plan.downloads.back().destinationPath);
    plan.pageAddresses.push_back(sourcePath);
  }
  plan.page = openingPage(paths);
  for (auto& download : plan.downloads) {
    if (download.destinationPath == plan.page) download.mayBeEmpty = false;
  }
  return std::nullopt;
}

}  // namespace

Result<CreativePlan> CreativePlan::make(const Campaign& campaign, const FileStore& files, bool hasFilm) {
  CreativePlan plan;
  std::optional<Error> error;
  switch (campaign.type) {
    case CampaignType::playable:
      plan.folder = files.claim(campaign.identifier);
      error = addArchive(plan, campaign);
      break;
    case CampaignType::video:
      if (!hasFilm) error = addFilm(plan, campaign, files);
      if (error || campaign.endAssets.empty() || campaign.endURL.empty()) break;
      plan.folder = files.claim(campaign.identifier);
      error = addEndCard(plan, campaign);
      break;
  }
  if (error) return *error;
  return plan;
}

}  // namespace vantorium
