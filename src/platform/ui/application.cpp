#include "platform/ui/application.hpp"

#include <array>
#include <vector>

#include "platform/foundation/url.hpp"

namespace vantorium::ui {

namespace {

/// Schemes by which an ad could reach into this machine rather than lead out of it.
constexpr std::array refusedSchemes{
    "",         "file",    "javascript", "data", "blob", "about", "view-source", "admin", "trash", "recent",
    "computer", "network", "smb",        "sftp", "nfs",  "afp",   "dav",         "davs",  "mtp"};

bool isRefused(const std::string& url) {
  const auto parsed = URL::parse(url);
  if (!parsed) return true;
  for (const char* scheme : refusedSchemes) {
    if (parsed->scheme() == scheme) return true;
  }
  return false;
}

}  // namespace

void Application::openURL(const std::string& url, std::function<void(bool opened)> completion) {
  if (!completion) completion = [](bool) {};
  if (isRefused(url)) {
    refusedURL(url);
    completion(false);
    return;
  }
  performOpenURL(url, std::move(completion));
}

std::shared_ptr<Application::Observation> Application::observe(ApplicationEvent event,
                                                               std::function<void()> handler) {
  std::erase_if(observations_, [](const auto& each) { return each.second.expired(); });
  auto observation = std::make_shared<Observation>(std::move(handler));
  observations_.emplace(event, observation);
  return observation;
}

void Application::post(ApplicationEvent event) {
  std::vector<std::shared_ptr<Observation>> observers;
  for (auto [entry, last] = observations_.equal_range(event); entry != last;) {
    if (auto observer = entry->second.lock()) {
      observers.push_back(std::move(observer));
      ++entry;
    } else {
      entry = observations_.erase(entry);
    }
  }
  // Held strongly while called: an observer may drop its own observation, or another's.
  for (const auto& observer : observers) observer->handler_();
}

}  // namespace vantorium::ui
