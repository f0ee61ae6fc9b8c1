#include "hosts/headless/scripted.hpp"

#include <fmt/format.h>

#include "platform/foundation/url.hpp"

namespace vantorium::headless {

using nlohmann::json;

Error scriptedError(const std::string& text) { return Error::platform("script", 1, text); }

void ScriptedWebEngine::tell(json load) {
  load["event"] = "load";
  load["engine"] = generation_;
  lastLoad_ = load;
  sink_(std::move(load));
}

void ScriptedWebEngine::loadFile(const std::string& path, const std::string& readableFolder) {
  tell({{"kind", "file"}, {"url", fileURL(path)}, {"folder", fileURL(readableFolder)}});
}

void ScriptedWebEngine::loadRequest(const std::string& url) { tell({{"kind", "request"}, {"url", url}}); }

void ScriptedWebEngine::loadHTML(const std::string& html, const std::string& baseURL) {
  html_ = html;
  tell({{"kind", "html"}, {"url", nullptr}, {"base", baseURL}});
}

bool ScriptedWebEngine::navigate(const std::string& url, WebViewNavigationType type) {
  static constexpr const char* names[] = {"linkClicked", "formSubmitted",   "backForward",
                                          "reload",      "formResubmitted", "other"};
  const std::shared_ptr<ui::View> self = shared_from_this();  // the decision may release this engine
  const auto decide = handlers().decidePolicy;
  const EventSink sink = sink_;
  const bool allowed = decide ? decide(url, type) : true;
  sink(
      {{"event", "navigation"}, {"url", url}, {"type", names[static_cast<int>(type)]}, {"allowed", allowed}});
  return allowed;
}

void ScriptedWebEngine::fail(const Error& error) {
  const std::shared_ptr<ui::View> self = shared_from_this();
  if (const auto didFail = handlers().didFail) didFail(error);
}

void ScriptedPlayer::tell(json details) {
  details["event"] = "player";
  sink_(std::move(details));
}

template <typename Member, typename... Arguments>
void ScriptedPlayer::call(Member member, Arguments... arguments) {
  if (const auto handler = handlers_.*member) handler(arguments...);
}

void ScriptedPlayer::play() {
  playing_ = true;
  tell({{"action", "play"}});
}

void ScriptedPlayer::pause() {
  playing_ = false;
  tell({{"action", "pause"}});
}

void ScriptedPlayer::seek(double seconds, bool /*exact*/) {
  position_ = seconds;
  tell({{"action", "seek"}, {"to", seconds}});
}

void ScriptedPlayer::setMuted(bool muted) {
  muted_ = muted;
  tell({{"action", "mute"}, {"muted", muted}});
}

void ScriptedPlayer::setHandlers(Handlers handlers) { handlers_ = std::move(handlers); }

void ScriptedPlayer::moveTo(double position, double duration) {
  position_ = position;
  duration_ = duration;
  call(&Handlers::periodicTime, position);
}

void ScriptedPlayer::playToEnd() {
  playing_ = false;
  position_ = duration_;
  call(&Handlers::didPlayToEnd);
}

void ScriptedPlayer::failToPlayToEnd() {
  playing_ = false;
  call(&Handlers::didFailToPlayToEnd);
}

void ScriptedPlayer::fail(Error error) {
  playing_ = false;
  error_ = std::move(error);
  call(&Handlers::didFail);
}

void ScriptedPlayer::setPresentationSize(ui::Size size) {
  size_ = size;
  call(&Handlers::presentationSizeDidChange);
}

Refusal ScriptedPlayer::comeTo(const std::string& event, const std::string& error) {
  if (event == "ended") {
    playToEnd();
  } else if (event == "failedToEnd") {
    failToPlayToEnd();
  } else if (event == "failed") {
    fail(scriptedError(error));
  } else {
    return fmt::format("\"{}\" is no video event; expected ended, failedToEnd or failed.", event);
  }
  return std::nullopt;
}

void ScriptedStoreSheet::loadProduct(std::string productID) {
  StoreProductViewController::loadProduct(std::move(productID));
  sink_({{"event", "storeSheet"}, {"action", "load"}, {"product", this->productID()}});
}

}  // namespace vantorium::headless
