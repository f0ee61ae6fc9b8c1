#pragma once

#include <memory>
#include <optional>
#include <string>

#include "model/rewardable_offer.hpp"
#include "screens/page_view_controller.hpp"

namespace vantorium {

/// Shows the popup that was prepared for a placement: one offer, taken by a click or closed. Main thread
/// only.
class RewardablePopupVC : public PageViewController {
 public:
  /// Looks up the placement's offer and its page in the cache.
  RewardablePopupVC(std::shared_ptr<Client> client, std::string placementID);
  const char* className() const override { return "RewardablePopupVC"; }

  /// Null when nothing is prepared; there is nothing to show then.
  const std::shared_ptr<RewardableOffer>& offer() const { return offer_; }

 protected:
  std::shared_ptr<ui::View> loadView() override;
  void loadPage() override;
  void pageDidClick(const std::string& url) override;

 private:
  void webViewDidFailLoad(WebView& view, const Error& error) override;

  const std::string placementID_;
  const std::shared_ptr<RewardableOffer> offer_;
  std::optional<std::string> htmlPath_, htmlFolderPath_;
};

}  // namespace vantorium
