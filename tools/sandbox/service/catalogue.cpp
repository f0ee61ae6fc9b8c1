#include "sandbox/service/catalogue.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace vantorium::sandbox {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::string_view base = "{{base}}";
constexpr size_t largestText = 4U << 20U;
constexpr std::array<std::string_view, 4> servedFolders{"static", "media", "track", "playable"};

struct FileType {
  std::string_view extension;
  std::string_view contentType;
  bool text;
};
constexpr std::array fileTypes{FileType{".html", "text/html; charset=utf-8", true},
                               FileType{".css", "text/css; charset=utf-8", true},
                               FileType{".js", "text/javascript; charset=utf-8", true},
                               FileType{".json", "application/json", true},
                               FileType{".svg", "image/svg+xml", true},
                               FileType{".png", "image/png", false},
                               FileType{".jpg", "image/jpeg", false},
                               FileType{".gif", "image/gif", false},
                               FileType{".mp4", "video/mp4", false},
                               FileType{".zip", "application/zip", false}};

FileType typeOf(const fs::path& path) {
  for (const auto& type : fileTypes) {
    if (path.extension() == type.extension) return type;
  }
  return {"", "application/octet-stream", false};
}

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
}

std::string readText(const fs::path& path) {
  const auto body = Body::file(path);
  if (!body) throw std::runtime_error(fmt::format("the catalogue has no readable file {}", path.string()));
  return body->read(0, body->size());
}

json readJSON(const fs::path& path) {
  try {
    return json::parse(readText(path));
  } catch (const json::parse_error& error) {
    const std::string_view what = error.what();  // "[json.exception.…] parse error at line 3, column 5: …"
    throw std::runtime_error(
        fmt::format("malformed catalogue file {}: {}", path.string(), what.substr(what.find("] ") + 2)));
  }
}

bool isArrayOfObjects(const json& value) {
  return value.is_array() &&
         std::all_of(value.begin(), value.end(), [](const json& element) { return element.is_object(); });
}

std::map<std::string, json> readFolder(const fs::path& folder, bool (*valid)(const json&),
                                       std::string_view shape) {
  std::map<std::string, json> records;
  if (!fs::is_directory(folder)) return records;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() != ".json") continue;
    json record = readJSON(entry.path());
    if (!valid(record)) {
      throw std::runtime_error(
          fmt::format("malformed catalogue file {}: not {}", entry.path().string(), shape));
    }
    records[entry.path().stem()] = std::move(record);
  }
  return records;
}

bool isObject(const json& value) { return value.is_object(); }

}  // namespace

void fillIn(json& value, const std::string& placeholder, const std::string& replacement) {
  if (value.is_string()) {
    replaceAll(value.get_ref<std::string&>(), placeholder, replacement);
  } else if (value.is_structured()) {
    for (auto& element : value) fillIn(element, placeholder, replacement);
  }
}

Catalogue::Catalogue(fs::path folder) : folder_(std::move(folder)) {
  if (!fs::is_directory(folder_)) {
    throw std::runtime_error(fmt::format("the catalogue folder {} does not exist", folder_.string()));
  }
  init_ = readJSON(folder_ / "init.json");
  if (!init_.is_object()) {
    throw std::runtime_error(
        fmt::format("malformed catalogue file {}: not an object", (folder_ / "init.json").string()));
  }
  campaigns_ = readFolder(folder_ / "campaigns", &isArrayOfObjects, "an array of objects");
  nativeAds_ = readFolder(folder_ / "native", &isArrayOfObjects, "an array of objects");
  offers_ = readFolder(folder_ / "offers", &isObject, "an object");
  walls_ = readFolder(folder_ / "walls", &isArrayOfObjects, "an array of objects");
}

void Catalogue::setBaseURL(std::string baseURL) {
  const std::lock_guard lock(mutex_);
  baseURL_ = std::move(baseURL);
}

json Catalogue::initAnswer() const {
  const std::lock_guard lock(mutex_);
  json answer = init_;
  fillIn(answer, std::string(base), baseURL_);
  return answer;
}

std::optional<json> Catalogue::campaigns(const std::string& placement) const {
  const std::lock_guard lock(mutex_);
  if (auto found = filled(campaigns_, placement)) return found;
  const auto placements = init_.find("placements");
  if (placements == init_.end() || !placements->is_array()) return std::nullopt;
  for (const auto& known : *placements) {
    if (known.is_object() && known.value("id", json()) == placement) return json::array();
  }
  return std::nullopt;
}

std::optional<json> Catalogue::nativeAds(const std::string& placement) const {
  const std::lock_guard lock(mutex_);
  return filled(nativeAds_, placement);
}

std::optional<json> Catalogue::offer(const std::string& placement) const {
  const std::lock_guard lock(mutex_);
  return filled(offers_, placement);
}

std::optional<std::string> Catalogue::popupTemplate() const { return page("rewarded_popup.html"); }

std::optional<std::string> Catalogue::offerWall(const std::string& placement) const {
  auto text = page("widget/page.html");
  if (!text) return std::nullopt;
  for (const char* part : {"widget.css", "widget.js"}) {
    replaceAll(*text, fmt::format("{{{{{}}}}}", part), page(fs::path("widget") / part).value_or(""));
  }
  const std::lock_guard lock(mutex_);
  std::string offers = filled(walls_, placement).value_or(json::array()).dump();
  replaceAll(offers, "<", "\\u003c");  // no text of an offer ends the script that carries it
  replaceAll(*text, "{{offers}}", offers);
  return text;
}

std::string Catalogue::canReward(const std::string& placement) const {
  const std::lock_guard lock(mutex_);
  const auto found = canReward_.find(placement);
  return found == canReward_.end() ? "true" : found->second;
}

std::string Catalogue::canView(const std::string& placement) const {
  const std::lock_guard lock(mutex_);
  const auto found = canView_.find(placement);
  return found == canView_.end() ? "true" : found->second;
}

std::optional<Answer> Catalogue::file(const std::string& path) const {
  const fs::path relative = fs::path(path).relative_path().lexically_normal();
  if (relative.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  const std::string top = *relative.begin();
  if (std::ranges::find(servedFolders, top) == servedFolders.end()) return std::nullopt;
  auto body = Body::file(folder_ / relative);
  if (!body) return std::nullopt;
  const FileType type = typeOf(relative);
  if (type.text && body->size() <= largestText) body = Body(filledText(body->read(0, body->size())));
  return Answer{.contentType = std::string(type.contentType), .body = *body};
}

std::optional<Answer> Catalogue::fixedAnswer(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = fixed_.find(path);
  if (found == fixed_.end()) return std::nullopt;
  return found->second;
}

void Catalogue::setInitAnswer(json answer) {
  const std::lock_guard lock(mutex_);
  init_ = std::move(answer);
}

void Catalogue::setCampaigns(const std::string& placement, json campaigns) {
  if (!isArrayOfObjects(campaigns)) throw std::invalid_argument("campaigns must be an array of objects");
  const std::lock_guard lock(mutex_);
  campaigns_[placement] = std::move(campaigns);
}

void Catalogue::setAnswer(const std::string& path, Answer answer) {
  const std::lock_guard lock(mutex_);
  fixed_[path] = std::move(answer);
}

void Catalogue::setCanReward(const std::string& placement, std::string text) {
  const std::lock_guard lock(mutex_);
  canReward_[placement] = std::move(text);
}

void Catalogue::setCanView(const std::string& placement, std::string text) {
  const std::lock_guard lock(mutex_);
  canView_[placement] = std::move(text);
}

std::optional<json> Catalogue::filled(const ByPlacement& records, const std::string& placement) const {
  const auto found = records.find(placement);
  if (found == records.end()) return std::nullopt;
  json value = found->second;
  fillIn(value, std::string(base), baseURL_);
  return value;
}

std::optional<std::string> Catalogue::page(const fs::path& path) const {
  const auto body = Body::file(folder_ / path);
  if (!body) return std::nullopt;
  return filledText(body->read(0, body->size()));
}

std::string Catalogue::filledText(std::string text) const {
  const std::lock_guard lock(mutex_);
  replaceAll(text, base, baseURL_);
  return text;
}

}  // namespace vantorium::sandbox
