#include "screens/rewardable_popup_vc.hpp"

#include <utility>

#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/ui/interface_file.hpp"

namespace vantorium {

RewardablePopupVC::RewardablePopupVC(std::shared_ptr<Client> client, std::string placementID)
    : PageViewController(std::move(client)),
      placementID_(std::move(placementID)),
      offer_(this->client().cacheClient->getOffer(placementID_)) {
  if (!offer_) return;
  htmlPath_ = this->client().cacheClient->getHTMLPath(offer_->identifier);
  htmlFolderPath_ = this->client().cacheClient->getFolderPath(offer_->identifier);
}

std::shared_ptr<ui::View> RewardablePopupVC::loadView() { return ui::loadInterface("RewardablePopupVC", {}); }

void RewardablePopupVC::loadPage() {
  if (!offer_ || !htmlPath_ || !htmlFolderPath_) return;
  std::optional<Error> ignored;
  const auto page = readTextFile(*htmlPath_, ignored);
  if (!page) return;
  webView().loadHTMLString(*page, fileURL(*htmlFolderPath_ + "/"));
  client().httpClient->reportImpression(offer_->impressionID);
}

// Whatever URL the page gave: it is the offer that says where a click leads.
void RewardablePopupVC::pageDidClick(const std::string& /*url*/) {
  const auto target = offer_ ? urlEncodedString(offer_->trackingURL) : std::nullopt;
  if (target && URL::parse(*target)) {
    tellClick(placementID_);
    const auto& parameter = serverParameter();
    client().httpClient->reportClick(offer_->impressionID, parameter ? parameter->parameters : std::nullopt);
    application().openURL(*target);
  }
  close();
}

void RewardablePopupVC::webViewDidFailLoad(WebView& /*view*/, const Error& /*error*/) {}

}  // namespace vantorium
