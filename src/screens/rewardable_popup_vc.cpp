#include "screens/rewardable_popup_vc.hpp"

#include <utility>

#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/ui/interface_file.hpp"

namespace vantorium {

RewardablePopupVC::RewardablePopupVC(std::shared_ptr<SdkContext> context,
                                     std::shared_ptr<HTTPClient> httpClient, std::string placementID,
                                     PreparedPopup popup)
    : PageViewController(std::move(context)),
      httpClient_(std::move(httpClient)),
      placementID_(std::move(placementID)),
      popup_(std::move(popup)) {}

std::shared_ptr<ui::View> RewardablePopupVC::loadView() { return ui::loadInterface("RewardablePopupVC", {}); }

void RewardablePopupVC::loadPage() {
  std::optional<Error> ignored;
  const auto page = readTextFile(popup_.page, ignored);
  if (!page) return;
  webView().loadHTMLString(*page, fileURL(popup_.folder->path() + "/"));
  httpClient_->reportImpression(popup_.offer->impressionID);
}

// Whatever URL the page gave: it is the offer that says where a click leads.
void RewardablePopupVC::pageDidClick(const std::string& /*url*/) {
  const auto target = urlEncodedString(popup_.offer->trackingURL);
  if (target && URL::parse(*target)) {
    tellClick(placementID_);
    const auto& parameter = serverParameter();
    httpClient_->reportClick(popup_.offer->impressionID, parameter ? parameter->parameters : std::nullopt);
    application().openURL(*target);
  }
  close();
}

void RewardablePopupVC::webViewDidFailLoad(WebView& /*view*/, const Error& /*error*/) {}

}  // namespace vantorium
