#pragma once

#include <gtkmm.h>

#include <memory>
#include <optional>
#include <string>

#include "hosts/gtk/native.hpp"
#include "platform/av/media_player.hpp"
#include "platform/foundation/clock.hpp"

namespace vantorium::gtk {

/// Plays through GTK's media stream, that is GStreamer.
class StreamPlayer final : public MediaPlayer, public NativePicture {
 public:
  /// `source` is the absolute path of a file, or an http or https address.
  StreamPlayer(std::string source, Clock& clock);
  ~StreamPlayer() override;

  void prepare() override;
  void play() override;
  void pause() override;
  void seek(double seconds, bool exact) override;
  bool isMuted() const override;
  void setMuted(bool muted) override;
  bool isPlaying() const override;
  double currentTime() const override;
  double duration() const override;
  ui::Size presentationSize() const override;
  std::optional<Error> error() const override { return error_; }
  void setHandlers(Handlers handlers) override;

  Glib::RefPtr<Gdk::Paintable> paintable() override;
  void observePaintable(std::weak_ptr<std::function<void()>> observer) override {
    observer_ = std::move(observer);
  }

 private:
  void open();
  void close();
  void failToOpen(Error error);
  void streamChanged(GtkMediaStream& stream, const std::string& property);
  void prepared();
  void sizeChanged();
  void failed(const GError& error);
  void updateTicking();
  void tick();
  static void notify(GtkMediaStream* stream, GParamSpec* property, StreamPlayer* self);

  std::string source_;
  Clock& clock_;
  GtkMediaStream* stream_ = nullptr;  ///< none before it is needed: the first of a process costs dear
  bool muted_ = false;
  std::weak_ptr<std::function<void()>> observer_;
  Handlers handlers_;
  ui::Size size_;
  bool couldPlay_ = false;  ///< the file was once found playable
  std::optional<Error> error_;
  std::optional<double> seekTarget_;  ///< until the stream tells that it is there
  std::unique_ptr<Timer> ticking_;
  std::unique_ptr<Timer> failing_;  ///< tells of an error found before there was anybody to hear of it
};

}  // namespace vantorium::gtk
