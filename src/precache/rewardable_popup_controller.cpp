#include "precache/rewardable_popup_controller.hpp"

#include <fmt/format.h>

#include <filesystem>

#include "platform/foundation/files.hpp"
#include "precache/end_card_page.hpp"
#include "precache/template_page.hpp"

namespace vantorium {

std::optional<std::string> RewardablePopupController::processHTML(const std::string& html) const {
  return filledTemplate(html, offer_->offer);
}

std::optional<Error> RewardablePopupController::prepare(const std::string& placementID,
                                                        const std::string& html) const {
  SdkContext& context = *client_->context;
  context.printLog("Rewardable Offer entity successufully fetched from server. Placement id: " + placementID);
  context.printLog("Trying to update HTML template with Rewardable Offer data. Placement id: " + placementID);
  auto error = writePage(html);
  if (error) {
    context.logError(error->errorMessage());
    return error;
  }
  context.printLog("HTML page for Rewardable Offer is prepared. Placement id: " + placementID);
  client_->cacheClient->add(offer_, placementID);
  return std::nullopt;
}

std::optional<Error> RewardablePopupController::writePage(const std::string& html) const {
  const auto page = processHTML(html);
  if (!page) {
    return VantoriumError::internalError(fmt::format(
        "Can't fill the rewardable popup: its page would have more than {} bytes, or takes too long. Serve a "
        "smaller template or offer.",
        largestPage));
  }
  const std::filesystem::path folder = client_->cacheClient->getFolderPath(offer_->identifier);
  createDirectoryIfNeeded(folder);
  return writeFileAtomically(folder / "index.html", *page);
}

}  // namespace vantorium
