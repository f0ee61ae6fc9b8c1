#pragma once

#include <memory>
#include <optional>
#include <string>

#include "screens/page_view_controller.hpp"

namespace vantorium {

/// Shows the service's offer wall: a live page on which the user picks an offer to earn by. It does its own
/// tracking. Main thread only.
class OfferWallVC : public PageViewController {
 public:
  /// `widgetURL` is the address of the wall's host; `appID` names the wall to the service; `userID` is who
  /// earns.
  OfferWallVC(std::shared_ptr<SdkContext> context, std::string widgetURL, std::string appID,
              std::string userID);
  const char* className() const override { return "OfferWallVC"; }

 protected:
  std::shared_ptr<ui::View> loadView() override;
  void loadPage() override;
  /// The URL holds where the click leads, percent-encoded; one that does not is ignored.
  void pageDidClick(const std::string& url) override;

 private:
  std::string address() const;
  void webViewDidFailLoad(WebView& view, const Error& error) override;

  const std::string widgetURL_, appID_, userID_;
};

}  // namespace vantorium
