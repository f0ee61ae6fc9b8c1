#pragma once

#include <gdkmm.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "platform/ui/controls.hpp"

namespace vantorium::gtk {

/// Decodes images to the size at which they are shown. Those of the SDK's bundle are decoded at once and
/// kept; files on disk came from the network: they are decoded by a worker thread, and not at all when they
/// claim to be huge. Main thread only.
class ImageLoader : public std::enable_shared_from_this<ImageLoader> {
 public:
  struct Request {
    ui::ImageName name;
    int width = 0, height = 0;  ///< device pixels to fit into
    int scale = 1;              ///< device pixels per point
    bool mayEnlarge = true;     ///< or keep the image's own size (in points) where that is smaller
    friend bool operator==(const Request&, const Request&) = default;
  };
  using Completion = std::function<void(Glib::RefPtr<Gdk::Texture> image)>;

  /// Calls `completion`, at once or later, with the image, or with null when there is none that can be
  /// decoded. Not called later once the loader is gone.
  void load(const Request& request, Completion completion);

 private:
  using Key = std::tuple<std::string, int, int, int, bool>;
  Glib::RefPtr<Gdk::Texture> bundled(const Request& request);

  std::map<Key, Glib::RefPtr<Gdk::Texture>> bundled_;
};

}  // namespace vantorium::gtk
