#include "screens/page_view_controller.hpp"

namespace vantorium {

void PageViewController::viewDidLoad() {
  BaseViewController::viewDidLoad();
  webView_ = WebView::make(context().host());
  webView_->setDelegate(std::static_pointer_cast<PageViewController>(shared_from_this()));
  webView_->setAudible(true);
  view().addSubview(webView_);
  loadPage();
}

void PageViewController::viewDidLayoutSubviews() { webView_->setFrame(view().bounds()); }

bool PageViewController::handleBack() {
  close();
  return true;
}

bool PageViewController::webViewShouldStartLoad(WebView& /*view*/, const std::string& url,
                                                WebViewNavigationType /*type*/) {
  const auto self = shared_from_this();  // either command may release the screen
  const std::string command = commandOf(url);
  if (command == "closead") close();
  if (command == "click" && !hasEnded()) pageDidClick(url);
  return true;
}

void PageViewController::tellClick(const std::string& placement) const {
  const auto delegate = context().delegate();
  if (delegate && delegate->respondsTo(DelegateMethod::didReceiveClick)) delegate->didReceiveClick(placement);
}

}  // namespace vantorium
