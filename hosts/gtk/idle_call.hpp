#pragma once

#include <glib.h>

#include <functional>
#include <utility>

namespace vantorium::gtk {

/// Work that is done once the main loop comes round, however often it was asked for until then. Not done once
/// this object is gone. Main thread only.
class IdleCall {
 public:
  explicit IdleCall(std::function<void()> work) : work_(std::move(work)) {}
  ~IdleCall() {
    if (source_ != 0) g_source_remove(source_);
  }
  IdleCall(const IdleCall&) = delete;
  IdleCall& operator=(const IdleCall&) = delete;

  /// Before the next frame is laid out.
  void schedule() {
    if (source_ == 0) source_ = g_idle_add_full(G_PRIORITY_HIGH_IDLE, &IdleCall::run, this, nullptr);
  }

 private:
  static gboolean run(gpointer self) {
    auto& call = *static_cast<IdleCall*>(self);
    call.source_ = 0;
    // A copy: the work may end this object.
    const auto work = call.work_;
    work();
    return G_SOURCE_REMOVE;
  }

  std::function<void()> work_;
  guint source_ = 0;
};

}  // namespace vantorium::gtk
