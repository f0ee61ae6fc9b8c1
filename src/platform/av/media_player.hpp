#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <vantorium/error.hpp>
#include <vantorium/export.h>

#include "platform/ui/geometry.hpp"

namespace vantorium {

/// Plays one media file. Implemented by a host; main thread only. A new player is at time zero, paused, with
/// sound, and has not touched its file. Handlers are called on the main thread, never after the player is
/// gone.
class VANTORIUM_HOST_API MediaPlayer {
 public:
  virtual ~MediaPlayer() = default;

  /// Gets to know duration and size and shows the first picture. Playing needs no preparation.
  virtual void prepare() = 0;
  virtual void play() = 0;
  virtual void pause() = 0;
  /// Moves to `seconds`; `exact` asks for the very frame, otherwise a near one will do.
  virtual void seek(double seconds, bool exact = false) = 0;
  virtual bool isMuted() const = 0;
  virtual void setMuted(bool muted) = 0;

  /// Whether it is playing, as asked with `play` and not ended, paused or failed.
  virtual bool isPlaying() const = 0;
  /// Seconds; 0 while unknown.
  virtual double currentTime() const = 0;
  virtual double duration() const = 0;
  /// Of the picture, in its own pixels; zero while unknown.
  virtual ui::Size presentationSize() const = 0;
  /// Why it cannot play; none while it can. A failed player stays failed.
  virtual std::optional<Error> error() const = 0;

  struct Handlers {
    std::function<void()> didPlayToEnd;
    /// Playing stopped before the end for a reason that may pass.
    std::function<void()> didFailToPlayToEnd;
    /// `presentationSize` changed.
    std::function<void()> presentationSizeDidChange;
    /// `error` became present.
    std::function<void()> didFail;
    /// Called every `tickInterval` seconds of playback, and after jumps, with the position in seconds.
    std::function<void(double seconds)> periodicTime;
    double tickInterval = 0.2;
  };
  /// Replaces all handlers; `{}` removes them. Safe inside a handler.
  virtual void setHandlers(Handlers handlers) = 0;
};

}  // namespace vantorium
