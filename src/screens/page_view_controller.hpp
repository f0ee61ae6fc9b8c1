#pragma once

#include <memory>
#include <string>
#include <utility>

#include "screens/base_view_controller.hpp"
#include "screens/web_view.hpp"

namespace vantorium {

/// An ad screen that is one page from edge to edge. The page gives commands by navigating: "closead" closes
/// the screen, "click" is the subclass's; every navigation may proceed. The back gesture closes it too, so
/// that a page that fails, hangs or has no button keeps nobody. Main thread only.
class PageViewController : public BaseViewController, public WebViewDelegate {
 public:
  bool handleBack() override;

 protected:
  explicit PageViewController(std::shared_ptr<SdkContext> context) : BaseViewController(std::move(context)) {}

  void viewDidLoad() override;
  void viewDidLayoutSubviews() override;

  /// Loads what there is to show; called once.
  virtual void loadPage() = 0;
  /// The page gave the command "click", with this URL.
  virtual void pageDidClick(const std::string& url) = 0;

  /// Tells the delegate, if it answers the method.
  void tellClick(const std::string& placement) const;
  void close() { end(true, std::nullopt); }

  WebView& webView() const { return *webView_; }

 private:
  bool webViewShouldStartLoad(WebView& view, const std::string& url, WebViewNavigationType type) override;

  std::shared_ptr<WebView> webView_;
};

}  // namespace vantorium
