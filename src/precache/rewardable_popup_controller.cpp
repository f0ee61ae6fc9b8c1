#include "precache/rewardable_popup_controller.hpp"

#include <fmt/format.h>

#include "platform/foundation/files.hpp"
#include "precache/end_card_page.hpp"
#include "precache/template_page.hpp"

namespace vantorium {

std::optional<std::string> RewardablePopupController::processHTML(const std::string& html) const {
  return filledTemplate(html, offer_->offer);
}

Result<PreparedPopup> RewardablePopupController::prepare(const std::string& placementID,
                                                         const std::string& html) const {
  context_->printLog("Rewardable Offer entity successufully fetched from server. Placement id: " +
                     placementID);
  context_->printLog("Trying to update HTML template with Rewardable Offer data. Placement id: " +
                     placementID);
  const auto page = processHTML(html);
  Result<PreparedPopup> popup =
      page ? writePage(*page)
           : VantoriumError::internalError(fmt::format(
                 "Can't fill the rewardable popup: its page would have more than {} bytes, or takes too "
                 "long. Serve a smaller template or offer.",
                 largestPage));
  if (popup) {
    context_->printLog("HTML page for Rewardable Offer is prepared. Placement id: " + placementID);
  } else {
    context_->logError(popup.error()->errorMessage());
  }
  return popup;
}

Result<PreparedPopup> RewardablePopupController::writePage(const std::string& page) const {
  PreparedPopup popup{offer_, files_->claim(offer_->identifier), {}};
  popup.page = popup.folder->path() + "/index.html";
  const auto write = [&] {
    auto error = createDirectoryIfNeeded(popup.folder->path());
    return error ? error : writeFileAtomically(popup.page, page);
  };
  auto error = write();
  if (error && files_->shelf().makeRoom(*error)) error = write();
  if (error) return *error;
  return popup;
}

}  // namespace vantorium
