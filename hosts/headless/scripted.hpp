#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "platform/av/media_player.hpp"
#include "platform/ui/store_product_view_controller.hpp"
#include "platform/web/web_engine.hpp"

namespace vantorium::headless {

/// Where the scripted ports tell what the SDK asked of them.
using EventSink = std::function<void(nlohmann::json event)>;

/// What prevented something that the script asked for, or nothing.
using Refusal = std::optional<std::string>;

/// An error that the script makes up.
Error scriptedError(const std::string& text);

/// A web engine whose page is the script: it loads nothing and navigates when told to.
class ScriptedWebEngine : public WebEngine {
 public:
  ScriptedWebEngine(EventSink sink, const char* generation)
      : sink_(std::move(sink)), generation_(generation) {}

  void loadFile(const std::string& path, const std::string& readableFolder) override;
  void loadRequest(const std::string& url) override;
  void loadHTML(const std::string& html, const std::string& baseURL) override;

  /// The page navigates; whether it was let through.
  bool navigate(const std::string& url, WebViewNavigationType type);
  /// The load fails.
  void fail(const Error& error);
  /// What was asked for last, as its event; null before anything was.
  const nlohmann::json& lastLoad() const { return lastLoad_; }
  /// The text given with the last `loadHTML`.
  const std::string& html() const { return html_; }

 private:
  void tell(nlohmann::json load);

  EventSink sink_;
  const char* generation_;
  nlohmann::json lastLoad_;
  std::string html_;
};

/// A player whose film is the script: it is where it is told to be.
class ScriptedPlayer : public MediaPlayer {
 public:
  ScriptedPlayer(EventSink sink, std::string source) : sink_(std::move(sink)), source_(std::move(source)) {}

  void prepare() override {}
  void play() override;
  void pause() override;
  void seek(double seconds, bool exact) override;
  bool isMuted() const override { return muted_; }
  void setMuted(bool muted) override;
  bool isPlaying() const override { return playing_ && !error_; }
  double currentTime() const override { return position_; }
  double duration() const override { return duration_; }
  ui::Size presentationSize() const override { return size_; }
  std::optional<Error> error() const override { return error_; }
  void setHandlers(Handlers handlers) override;

  /// The film is at `position` of `duration` seconds; the periodic handler runs.
  void moveTo(double position, double duration);
  void playToEnd();
  void failToPlayToEnd();
  void fail(Error error);
  void setPresentationSize(ui::Size size);
  /// One of these by its name: "ended", "failedToEnd", or "failed" with the error's text.
  Refusal comeTo(const std::string& event, const std::string& error);
  const std::string& source() const { return source_; }

 private:
  void tell(nlohmann::json details);
  /// Calls a handler in a way that survives its replacing the handlers or releasing the player's owner.
  template <typename Member, typename... Arguments>
  void call(Member member, Arguments... arguments);

  EventSink sink_;
  std::string source_;
  Handlers handlers_;
  bool playing_ = false;
  bool muted_ = false;
  double position_ = 0;
  double duration_ = 0;
  ui::Size size_;
  std::optional<Error> error_;
};

/// The store sheet, telling which product it was asked for.
class ScriptedStoreSheet : public ui::StoreProductViewController {
 public:
  ScriptedStoreSheet(ui::Application& application, EventSink sink)
      : StoreProductViewController(application), sink_(std::move(sink)) {}

  void loadProduct(std::string productID) override;

 private:
  EventSink sink_;
};

}  // namespace vantorium::headless
