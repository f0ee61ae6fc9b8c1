#include "hosts/gtk/media_player.hpp"

#include <array>
#include <fstream>
#include <string_view>
#include <utility>

namespace vantorium::gtk {

namespace {

constexpr double microseconds = 1e6;

// Streams end in callbacks of their own, which go on using them.
void releaseLater(GtkMediaStream* stream) {
  g_idle_add(
      [](gpointer object) -> gboolean {
        g_object_unref(object);
        return G_SOURCE_REMOVE;
      },
      stream);
}

Error playbackError(const std::string& source, const GError& error) {
  const std::string whole = error.message;
  const std::string reason = whole.substr(0, whole.find('\n'));
  return Error::platform(g_quark_to_string(error.domain), error.code, "Can't play " + source + ": " + reason,
                         whole);
}

// Playlists and the like are files that lead to others, on this machine too; what is not a video itself stays
// out.
bool beginsLikeVideo(const std::string& path) {
  std::array<char, 8> bytes{};
  std::ifstream(path, std::ios::binary).read(bytes.data(), bytes.size());
  const std::string_view start(bytes.data(), bytes.size());
  const std::string_view box = start.substr(4);
  return box == "ftyp" || box == "moov" || box == "mdat" || box == "wide" || box == "free" || box == "skip" ||
         start.starts_with("\x1a\x45\xdf\xa3") || start.starts_with("OggS");
}

}  // namespace

StreamPlayer::StreamPlayer(std::string source, Clock& clock) : source_(std::move(source)), clock_(clock) {}

StreamPlayer::~StreamPlayer() { close(); }

void StreamPlayer::close() {
  if (stream_ == nullptr) return;
  g_signal_handlers_disconnect_by_data(stream_, this);
  gtk_media_stream_pause(stream_);
  releaseLater(std::exchange(stream_, nullptr));
}

void StreamPlayer::open() {
  close();
  const bool isFile = source_.starts_with('/');
  if (isFile && !beginsLikeVideo(source_)) {
    return failToOpen(Error::platform(g_quark_to_string(G_IO_ERROR), G_IO_ERROR_NOT_SUPPORTED,
                                      "Can't play " + source_ + ": it is no MP4, WebM or Ogg video."));
  }
  GFile* const file = isFile ? g_file_new_for_path(source_.c_str()) : g_file_new_for_uri(source_.c_str());
  stream_ = gtk_media_file_new_for_file(file);
  g_object_unref(file);
  gtk_media_stream_set_muted(stream_, static_cast<gboolean>(muted_));
  g_signal_connect(stream_, "notify", G_CALLBACK(notify), this);
  g_signal_connect_swapped(stream_, "invalidate-size",
                           G_CALLBACK(+[](StreamPlayer* self) { self->sizeChanged(); }), this);
  // Without any module that plays media the stream is born with its error, and will not tell of it again.
  if (const GError* const error = gtk_media_stream_get_error(stream_))
    failToOpen(playbackError(source_, *error));
  if (const auto observer = observer_.lock()) (*observer)();
}

// Told later: whoever asked is not done with asking.
void StreamPlayer::failToOpen(Error error) {
  error_ = std::move(error);
  failing_ = clock_.schedule(Seconds{0}, false, [this] {
    if (const auto didFail = handlers_.didFail) didFail();
  });
}

void StreamPlayer::prepare() {
  if (stream_ == nullptr && !error_) open();
}

void StreamPlayer::play() {
  if (error_) return;
  // A stream that broke off never plays again; another one may.
  if (stream_ == nullptr || gtk_media_stream_get_error(stream_) != nullptr) open();
  if (stream_ != nullptr) gtk_media_stream_play(stream_);
}

void StreamPlayer::pause() {
  if (stream_ != nullptr) gtk_media_stream_pause(stream_);
}

void StreamPlayer::seek(double seconds, bool) {
  if (error_) return;
  const bool isPrepared = stream_ != nullptr && gtk_media_stream_is_prepared(stream_);
  if (isPrepared && !gtk_media_stream_is_seekable(stream_)) return;
  seekTarget_ = seconds;
  if (isPrepared) gtk_media_stream_seek(stream_, static_cast<gint64>(seconds * microseconds));
}

bool StreamPlayer::isMuted() const { return muted_; }

void StreamPlayer::setMuted(bool muted) {
  muted_ = muted;
  if (stream_ != nullptr) gtk_media_stream_set_muted(stream_, static_cast<gboolean>(muted));
}

bool StreamPlayer::isPlaying() const { return stream_ != nullptr && gtk_media_stream_get_playing(stream_); }

double StreamPlayer::currentTime() const {
  if (stream_ == nullptr) return seekTarget_.value_or(0);
  return seekTarget_.value_or(static_cast<double>(gtk_media_stream_get_timestamp(stream_)) / microseconds);
}

double StreamPlayer::duration() const {
  if (stream_ == nullptr) return 0;
  return static_cast<double>(gtk_media_stream_get_duration(stream_)) / microseconds;
}

ui::Size StreamPlayer::presentationSize() const { return size_; }

void StreamPlayer::setHandlers(Handlers handlers) {
  handlers_ = std::move(handlers);
  ticking_.reset();
  updateTicking();
}

Glib::RefPtr<Gdk::Paintable> StreamPlayer::paintable() {
  if (stream_ == nullptr) return {};
  return Glib::wrap(GDK_PAINTABLE(stream_), true);
}

void StreamPlayer::notify(GtkMediaStream* stream, GParamSpec* property, StreamPlayer* self) {
  self->streamChanged(*stream, property->name);
}

// Each branch ends with what may call out: the handler may destroy this player.
void StreamPlayer::streamChanged(GtkMediaStream& stream, const std::string& property) {
  if (property == "error") {
    if (const GError* const error = gtk_media_stream_get_error(&stream)) failed(*error);
  } else if (property == "prepared") {
    if (gtk_media_stream_get_error(&stream) == nullptr) prepared();
  } else if (property == "playing") {
    updateTicking();
  } else if (property == "seeking") {
    if (!gtk_media_stream_is_seeking(&stream)) tick();
  } else if (property == "timestamp") {
    // The first position after a jump comes a little later than its end.
    if (!gtk_media_stream_is_seeking(&stream)) seekTarget_.reset();
  } else if (property == "ended" && gtk_media_stream_get_ended(&stream)) {
    if (const auto didPlayToEnd = handlers_.didPlayToEnd) didPlayToEnd();
  }
}

void StreamPlayer::prepared() {
  couldPlay_ = true;
  // A new stream stands at its start anyway.
  if (seekTarget_.value_or(0) > 0) return seek(*seekTarget_, true);
  seekTarget_.reset();
}

void StreamPlayer::sizeChanged() {
  auto* const picture = GDK_PAINTABLE(stream_);
  const ui::Size size{static_cast<double>(gdk_paintable_get_intrinsic_width(picture)),
                      static_cast<double>(gdk_paintable_get_intrinsic_height(picture))};
  if (size == size_) return;
  size_ = size;
  if (const auto changed = handlers_.presentationSizeDidChange) changed();
}

void StreamPlayer::failed(const GError& error) {
  seekTarget_.reset();
  if (couldPlay_) {
    if (const auto didFailToPlayToEnd = handlers_.didFailToPlayToEnd) didFailToPlayToEnd();
    return;
  }
  error_ = playbackError(source_, error);
  if (const auto didFail = handlers_.didFail) didFail();
}

void StreamPlayer::updateTicking() {
  if (!isPlaying() || !handlers_.periodicTime) {
    ticking_.reset();
  } else if (!ticking_) {
    ticking_ = clock_.schedule(Seconds(handlers_.tickInterval), true, [this] { tick(); });
  }
}

void StreamPlayer::tick() {
  if (const auto periodicTime = handlers_.periodicTime) periodicTime(currentTime());
}

}  // namespace vantorium::gtk
