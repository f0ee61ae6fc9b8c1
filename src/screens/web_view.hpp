#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/host.hpp"
#include "platform/ui/view.hpp"
#include "platform/web/web_engine.hpp"

namespace vantorium {

class WebView;

/// Decides where a page may go, and so hears the commands that a page gives by navigating. Main thread only.
class WebViewDelegate {
 public:
  virtual ~WebViewDelegate() = default;
  /// Whether the navigation may proceed. The view may be released inside this call.
  virtual bool webViewShouldStartLoad(WebView& view, const std::string& url, WebViewNavigationType type) = 0;
  virtual void webViewDidFailLoad(WebView& view, const Error& error) = 0;
};

/// Hosts one engine of the platform, which always fills it. Without a delegate every navigation is allowed
/// and failures are dropped. Main thread only.
class WebView : public ui::View {
 public:
  static std::shared_ptr<WebView> make(Host& host);
  explicit WebView(Host& host) : host_(host) {}
  const char* className() const override { return "WebView"; }

  /// Held weakly.
  void setDelegate(std::weak_ptr<WebViewDelegate> delegate) { delegate_ = std::move(delegate); }

  /// Loads a page on disk that may read the given folder (both absolute paths). Fails at once when an older
  /// engine cannot read the page; nothing is loaded then.
  std::optional<Error> loadFileURL(const std::string& path, const std::string& allowingReadAccessTo);
  /// Whether the page is heard; not at first.
  void setAudible(bool audible) { engine_->setAudible(audible); }
  void loadRequest(const std::string& url);
  void loadHTMLString(const std::string& html, const std::string& baseURL);

 private:
  void setUp();
  bool shouldStartLoad(const std::string& url, WebViewNavigationType type);
  void didFailLoad(const Error& error);

  Host& host_;
  std::weak_ptr<WebViewDelegate> delegate_;
  std::shared_ptr<WebEngine> engine_;
};

/// The scheme of a URL in lower case, by which pages give commands; empty when there is none.
std::string commandOf(const std::string& url);

}  // namespace vantorium
