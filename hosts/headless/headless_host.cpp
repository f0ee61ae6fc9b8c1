#include "hosts/headless/headless_host.hpp"

#include <cstdlib>
#include <utility>

#include "hosts/headless/snapshot.hpp"

namespace vantorium::headless {

using nlohmann::json;

namespace {

constexpr const char* noPage =
    "No screen with a page is in front. Expected one, such as an offer wall or an end card: show it first.";

class Probe : public ReachabilityProbe {
 public:
  explicit Probe(std::shared_ptr<HeadlessReachability> network) : network_(std::move(network)) {}
  std::optional<std::uint32_t> flags() override { return network_->state().flags; }
  std::optional<std::string> radioAccessTechnology() override { return network_->state().radio; }
  bool reachableOnWWAN() const override { return network_->state().reachableOnWWAN; }
  bool isRunningOnDevice() const override { return network_->state().isRunningOnDevice; }
  void setChangeHandler(std::function<void()> handler) override {
    observation_ = network_->observe(std::move(handler));
  }

 private:
  std::shared_ptr<HeadlessReachability> network_;
  std::shared_ptr<void> observation_;
};

bool contains(const json& event, const json& fields) {
  for (const auto& [name, value] : fields.items()) {
    if (!event.contains(name) || event[name] != value) return false;
  }
  return true;
}

}  // namespace

Host::Host(Options options)
    : options_(std::move(options)),
      loop_(std::make_shared<MainLoop>(options_.clock)),
      hasReachabilityMonitor_(options_.hasReachabilityMonitor),
      application_(loop_, sink()) {}

EventSink Host::sink() {
  return [this](json event) { tell(std::move(event)); };
}

Directories Host::directories() const { return {options_.home / "caches", options_.home / "preferences"}; }

std::unique_ptr<ReachabilityProbe> Host::makeReachabilityProbe() {
  return hasReachabilityMonitor_ ? std::make_unique<Probe>(reachability_) : nullptr;
}

void Host::print(std::string_view line) { tell({{"event", "console"}, {"line", std::string(line)}}); }

WebEngineGeneration Host::webEngineGeneration() const {
  const int major = std::atoi(device_.facts().systemVersion.c_str());
  return major >= 9 ? WebEngineGeneration::newer : WebEngineGeneration::older;
}

std::shared_ptr<WebEngine> Host::makeWebEngine() {
  const bool newer = webEngineGeneration() == WebEngineGeneration::newer;
  return std::make_shared<ScriptedWebEngine>(sink(), newer ? "newer" : "older");
}

std::shared_ptr<MediaPlayer> Host::makePlayer(const std::string& source) {
  return std::make_shared<ScriptedPlayer>(sink(), source);
}

std::shared_ptr<ui::StoreProductViewController> Host::makeStoreProductViewController() {
  return std::make_shared<ScriptedStoreSheet>(application_, sink());
}

void Host::tell(json event) {
  {
    MutexLock lock(eventsMutex_);
    events_.push_back(event);
  }
  if (observer_) observer_(std::move(event));
  loop_->wake();  // whoever awaits an event
}

std::vector<json> Host::events() const {
  MutexLock lock(eventsMutex_);
  return events_;
}

std::vector<json> Host::takeEvents() {
  MutexLock lock(eventsMutex_);
  awaited_ = 0;
  return std::exchange(events_, {});
}

json Host::awaitEvent(const json& fields, double timeoutSeconds) {
  json found;
  loop_->runUntil(
      [&] {
        MutexLock lock(eventsMutex_);
        while (awaited_ < events_.size()) {
          const json& event = events_[awaited_++];
          if (!contains(event, fields)) continue;
          found = event;
          return true;
        }
        return false;
      },
      Seconds{timeoutSeconds});
  return found;
}

std::shared_ptr<ScriptedPlayer> Host::frontPlayer() {
  const auto screen = application_.frontScreen();
  return screen ? playerIn(screen->view()) : nullptr;
}

std::shared_ptr<ScriptedWebEngine> Host::frontWebEngine() {
  const auto screen = application_.frontScreen();
  return screen ? webEngineIn(screen->view()) : nullptr;
}

Host::Refusal Host::navigate(const std::string& url, WebViewNavigationType type) {
  const auto engine = frontWebEngine();
  if (!engine) return noPage;
  engine->navigate(url, type);
  return std::nullopt;
}

Host::Refusal Host::failPage(const std::string& text) {
  const auto engine = frontWebEngine();
  if (!engine) return noPage;
  engine->fail(scriptedError(text));
  return std::nullopt;
}

Host::Refusal Host::moveVideo(double position, double duration) {
  const auto player = frontPlayer();
  if (!player) return noVideo;
  player->moveTo(position, duration);
  return std::nullopt;
}

Host::Refusal Host::videoEvent(const std::string& event, const std::string& error) {
  const auto player = frontPlayer();
  if (!player) return noVideo;
  return player->comeTo(event, error);
}

Host::Refusal Host::setVideoSize(double width, double height) {
  const auto player = frontPlayer();
  if (!player) return noVideo;
  player->setPresentationSize({width, height});
  return std::nullopt;
}

Host::Refusal Host::tap(const std::string& control) {
  const auto screen = application_.frontScreen();
  if (!screen) return "No ad screen is in front. Expected one: show an ad first.";
  if (control == "back") {
    screen->handleBack();
    return std::nullopt;
  }
  return tapControl(screen->view(), control);
}

Host::Refusal Host::finishStore() {
  const auto sheet = std::dynamic_pointer_cast<ScriptedStoreSheet>(application_.frontScreen());
  if (!sheet)
    return "No store sheet is in front. Expected one: have the page navigate to a store's address first.";
  sheet->finish();
  return std::nullopt;
}

void Host::setScreen(double width, double height) {
  device_.setScreen(width, height);
  application_.setScreen({width, height});
}

json Host::snapshot() {
  const auto screen = application_.frontScreen();
  if (!screen) return nullptr;
  screen->view().window()->layoutIfNeeded();
  return snapshotOf(*screen);
}

}  // namespace vantorium::headless
