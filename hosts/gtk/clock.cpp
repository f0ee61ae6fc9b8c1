#include "hosts/gtk/clock.hpp"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/foundation/run_or_drop.hpp"

namespace vantorium::gtk {

namespace {

struct Tick {
  std::function<void()> handler;
  bool repeats;
};

// The main context keeps a source's data alive while it is dispatched: a timer may be dropped in its own
// handler.
class SourceTimer final : public Timer {
 public:
  explicit SourceTimer(GSource* source) : source_(source) {}
  SourceTimer(const SourceTimer&) = delete;
  SourceTimer& operator=(const SourceTimer&) = delete;
  ~SourceTimer() override {
    g_source_destroy(source_);
    g_source_unref(source_);
  }

 private:
  GSource* source_;
};

guint milliseconds(Seconds interval) {
  constexpr double longest = 1u << 31;
  return static_cast<guint>(std::clamp(std::round(interval.count() * 1000), 0.0, longest));
}

gboolean runTick(gpointer data) {
  Tick& tick = *static_cast<Tick*>(data);
  const bool repeats = tick.repeats;
  runOrDrop(tick.handler);
  return repeats ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

}  // namespace

std::unique_ptr<Timer> MainLoopClock::schedule(Seconds interval, bool repeats,
                                               std::function<void()> handler) {
  GSource* const source = g_timeout_source_new(milliseconds(interval));
  g_source_set_callback(source, runTick, new Tick{std::move(handler), repeats},
                        [](gpointer data) { delete static_cast<Tick*>(data); });
  auto timer = std::make_unique<SourceTimer>(source);
  g_source_attach(source, nullptr);
  return timer;
}

}  // namespace vantorium::gtk
