#pragma once

#include <glib.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vantorium::gtk {

/// Calls all that subscribe ten times a second, by one timer that sleeps while there are none. Main thread
/// only.
class Ticker {
 public:
  Ticker() = default;
  ~Ticker() {
    if (source_ != 0) g_source_remove(source_);
  }
  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;

  using Tick = std::function<void()>;
  /// Subscribes for as long as what is returned lives.
  [[nodiscard]] std::shared_ptr<Tick> subscribe(Tick tick) {
    auto subscription = std::make_shared<Tick>(std::move(tick));
    subscribers_.push_back(subscription);
    if (source_ == 0) source_ = g_timeout_add(interval, &Ticker::run, this);
    return subscription;
  }

 private:
  static constexpr guint interval = 100;  // milliseconds

  static gboolean run(gpointer self) {
    auto& ticker = *static_cast<Ticker*>(self);
    std::erase_if(ticker.subscribers_, [](const auto& each) { return each.expired(); });
    const auto subscribers = ticker.subscribers_;  // whoever is called may subscribe others
    for (const auto& each : subscribers) {
      if (const auto tick = each.lock()) (*tick)();
    }
    if (!subscribers.empty()) return G_SOURCE_CONTINUE;
    ticker.source_ = 0;
    return G_SOURCE_REMOVE;
  }

  std::vector<std::weak_ptr<Tick>> subscribers_;
  guint source_ = 0;
};

}  // namespace vantorium::gtk
