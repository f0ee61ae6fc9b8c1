#pragma once

#include <webkit/webkit.h>

#include <functional>
#include <memory>
#include <string>

#include "hosts/gtk/native.hpp"
#include "hosts/gtk/web_context.hpp"
#include "platform/web/web_engine.hpp"

namespace vantorium::gtk {

/// WebKitGTK as the SDK's web engine. Pages get no windows of their own and make no sound while they are not
/// seen.
class WebKitEngine final : public WebEngine, public NativeWidget {
 public:
  explicit WebKitEngine(std::shared_ptr<WebContext> context);
  ~WebKitEngine() override;

  void setAudible(bool audible) override;
  void loadFile(const std::string& path, const std::string& readableFolder) override;
  void loadRequest(const std::string& url) override;
  void loadHTML(const std::string& html, const std::string& baseURL) override;

  std::shared_ptr<Gtk::Widget> widget() override { return widget_; }
  WebKitWebView* webView() const { return view_; }

 private:
  void connectSignals();
  /// Confines pages to the folder (to no file when it is empty), then runs `start`, unless another load has
  /// begun.
  void confine(const std::string& folder, std::function<void()> start);
  void compileFilter(const std::string& folder, std::function<void()> start);
  void applyFilter(WebKitUserContentFilter* filter);
  bool ask(WebKitNavigationAction* action) const;
  void openInPlace(WebKitNavigationAction* action);
  void fail(const Error& error);
  std::shared_ptr<WebKitEngine> self();
  /// Lets go of a reference that may be the last, outside of the engine's own callbacks.
  static void releaseLater(std::shared_ptr<WebKitEngine> engine);

  static gboolean decidePolicy(WebKitWebView*, WebKitPolicyDecision*, WebKitPolicyDecisionType,
                               WebKitEngine* self);
  static GtkWidget* createWindow(WebKitWebView*, WebKitNavigationAction*, WebKitEngine* self);
  static gboolean loadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error, WebKitEngine* self);
  static void processTerminated(WebKitWebView*, WebKitWebProcessTerminationReason, WebKitEngine* self);
  void updateMuted();
  static void mappedChanged(GtkWidget*, WebKitEngine* self) { self->updateMuted(); }

  std::shared_ptr<WebContext> context_;
  WebKitWebView* view_;
  std::shared_ptr<Gtk::Widget> widget_;
  std::string folder_;  ///< that pages may read
  bool isAudible_ = false;
  bool isConfined_ = false;  ///< whether a filter is in place
  unsigned load_ = 0;        ///< counts load calls
};

}  // namespace vantorium::gtk
