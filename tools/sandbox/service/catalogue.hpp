#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "sandbox/service/answer.hpp"

namespace vantorium::sandbox {

/// What the service has to offer, read from a folder and changed by tests. "{{base}}" is filled in where it
/// is handed out. Callable on any thread.
///
/// init.json                           the whole init answer
/// campaigns/PLACEMENT.json            array of campaigns
/// native/PLACEMENT.json               array of native ads
/// offers/PLACEMENT.json               object
/// rewarded_popup.html                 template
/// walls/PLACEMENT.json                array of the offer wall's offers
/// widget/                             page.html of the offer wall, and what it is put together from
/// static/ media/ track/ playable/     files, served under these paths
class Catalogue {
 public:
  /// Throws std::runtime_error saying which file is missing or malformed, and where.
  explicit Catalogue(std::filesystem::path folder);

  void setBaseURL(std::string baseURL);

  nlohmann::json initAnswer() const;
  /// The campaigns of a placement; nullopt when it is neither in the catalogue nor in the init answer.
  std::optional<nlohmann::json> campaigns(const std::string& placement) const;
  std::optional<nlohmann::json> nativeAds(const std::string& placement) const;
  std::optional<nlohmann::json> offer(const std::string& placement) const;
  std::optional<std::string> popupTemplate() const;
  /// The page of the offer wall, with style, script and the placement's offers (none: an empty wall) in it.
  std::optional<std::string> offerWall(const std::string& placement) const;
  /// "true" for every placement until set.
  std::string canReward(const std::string& placement) const;
  std::string canView(const std::string& placement) const;
  /// A file of one of these folders by its decoded path; texts are filled in.
  std::optional<Answer> file(const std::string& path) const;
  /// What a test set for exactly this path.
  std::optional<Answer> fixedAnswer(const std::string& path) const;

  void setInitAnswer(nlohmann::json answer);
  void setCampaigns(const std::string& placement, nlohmann::json campaigns);
  void setAnswer(const std::string& path, Answer answer);
  void setCanReward(const std::string& placement, std::string text);
  void setCanView(const std::string& placement, std::string text);

 private:
  using ByPlacement = std::map<std::string, nlohmann::json>;

  std::optional<nlohmann::json> filled(const ByPlacement& records, const std::string& placement) const;
  std::string filledText(std::string text) const;
  std::optional<std::string> page(const std::filesystem::path& path) const;

  const std::filesystem::path folder_;
  mutable std::mutex mutex_;  // guards everything below
  std::string baseURL_;
  nlohmann::json init_;
  ByPlacement campaigns_;
  ByPlacement nativeAds_;
  ByPlacement offers_;
  ByPlacement walls_;
  std::map<std::string, std::string> canReward_;
  std::map<std::string, std::string> canView_;
  std::map<std::string, Answer> fixed_;
};

/// The catalogue that comes with the sandbox: `share/vantorium/sandbox` in a folder above this program, as a
/// package and a build have it. Throws std::runtime_error, saying where it looked, when there is none.
std::filesystem::path defaultCatalogue();

/// Replaces `placeholder` in every string of a JSON value.
void fillIn(nlohmann::json& value, const std::string& placeholder, const std::string& replacement);

}  // namespace vantorium::sandbox
