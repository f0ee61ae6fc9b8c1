#pragma once

#include <memory>
#include <string>

#include "cache/prepared_popup.hpp"
#include "protocol/http_client.hpp"
#include "screens/page_view_controller.hpp"

namespace vantorium {

/// Shows the popup that was prepared for a placement: one offer, taken by a click or closed. Main thread
/// only.
class RewardablePopupVC : public PageViewController {
 public:
  RewardablePopupVC(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
                    std::string placementID, PreparedPopup popup);
  const char* className() const override { return "RewardablePopupVC"; }

 protected:
  std::shared_ptr<ui::View> loadView() override;
  void loadPage() override;
  void pageDidClick(const std::string& url) override;

 private:
  void webViewDidFailLoad(WebView& view, const Error& error) override;

  const std::shared_ptr<HTTPClient> httpClient_;
  const std::string placementID_;
  const PreparedPopup popup_;
};

}  // namespace vantorium
