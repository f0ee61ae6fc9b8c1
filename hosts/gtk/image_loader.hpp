#pragma once

#include <gdkmm.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <vantorium/dispatch_queue.hpp>

#include "platform/ui/image.hpp"

namespace vantorium::gtk {

/// A decoded picture in several sizes, each half as wide and high as the one before, so that it is drawn
/// without flicker at any size.
struct DecodedImage {
  std::vector<Glib::RefPtr<Gdk::Texture>> levels;  ///< at least one
  int width() const { return levels.front()->get_width(); }
  int height() const { return levels.front()->get_height(); }
  std::size_t bytes() const;
};

/// Decodes images. Those of the SDK's bundle are decoded at once, at the size at which they are shown.
/// Pictures of ads came from the network: each is decoded once while it is in use, by a worker thread, one at
/// a time, and not at all when it claims to be huge. Those that were shown last are kept, up to 64 MiB. Main
/// thread only.
class ImageLoader : public std::enable_shared_from_this<ImageLoader> {
 public:
  struct Request {
    std::string name;
    int width = 0, height = 0;  ///< device pixels to fit into
    int scale = 1;              ///< device pixels per point
    bool mayEnlarge = true;     ///< or keep the image's own size (in points) where that is smaller
    friend bool operator==(const Request&, const Request&) = default;
  };
  /// An image of the bundle; null when there is none, or no room for it.
  Glib::RefPtr<Gdk::Texture> bundled(const Request& request);

  using Picture = std::shared_ptr<const DecodedImage>;
  using Completion = std::function<void(Picture picture)>;
  /// Calls `completion`, at once or later, with the picture, or with null when it cannot be decoded. Not
  /// called once the loader is gone.
  void load(const std::shared_ptr<const ui::Image>& image, Completion completion);

 private:
  /// What is known of one picture of an ad.
  struct Entry {
    bool isBroken = false;                    ///< it is no picture, and need not be tried again
    Picture kept;                             ///< null once others have taken its place, or it is broken
    std::weak_ptr<const DecodedImage> shown;  ///< for as long as somebody shows it
    std::vector<Completion> waiting;
    std::uint64_t lastUse = 0;
  };
  void decode(const std::shared_ptr<const ui::Image>& image);
  void finish(const std::string& identity, const Picture& picture);
  void makeRoom();

  using Key = std::tuple<std::string, int, int, int, bool>;
  std::map<Key, Glib::RefPtr<Gdk::Texture>> bundled_;
  std::map<std::string, Entry> pictures_;  ///< by identity
  std::uint64_t uses_ = 0;
  /// One at a time: what is decoded may be large.
  std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("vantorium.images");
};

}  // namespace vantorium::gtk
