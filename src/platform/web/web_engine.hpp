#pragma once

#include <functional>
#include <string>

#include <vantorium/error.hpp>
#include <vantorium/export.h>

#include "platform/ui/view.hpp"

namespace vantorium {

/// Why a navigation happens; the numbers are the platform's.
enum class WebViewNavigationType {
  linkClicked = 0,
  formSubmitted = 1,
  backForward = 2,
  reload = 3,
  formResubmitted = 4,
  other = 5,
};

/// The two kinds of engine that a platform may have. The newer one loads files with a folder they may read;
/// the older one is given the page's text.
enum class WebEngineGeneration { newer, older };

/// One web engine view. Implemented by a host, which shows it where the view lies; main thread only.
///
/// A page runs with script on. It may read files of the folder named with `loadFile` (or, for a "file:" base,
/// of the base folder) and nothing else on disk. No script runs before one of these calls, and no sound is
/// heard before `setAudible`. Scrolling is off and the background is clear.
class VANTORIUM_HOST_API WebEngine : public ui::View {
 public:
  /// `decidePolicy` is asked before each navigation, redirects and those started by a load call included;
  /// false stops it. `didFail` hears of a load that failed after it was let through. Either may destroy the
  /// engine.
  struct Handlers {
    std::function<bool(const std::string& url, WebViewNavigationType type)> decidePolicy;
    std::function<void(const Error& error)> didFail;
  };

  const char* className() const override { return "WebEngine"; }
  void setHandlers(Handlers handlers) { handlers_ = std::move(handlers); }

  /// Whether the page is heard, should it have something to say; not at first. An engine that is not in a
  /// visible window is never heard.
  virtual void setAudible(bool /*audible*/) {}
  /// Absolute paths of the page and of the folder that it may read. Newer engines only.
  virtual void loadFile(const std::string& path, const std::string& readableFolder) = 0;
  virtual void loadRequest(const std::string& url) = 0;
  /// `baseURL` may be empty.
  virtual void loadHTML(const std::string& html, const std::string& baseURL) = 0;

 protected:
  const Handlers& handlers() const { return handlers_; }

 private:
  Handlers handlers_;
};

}  // namespace vantorium
