#pragma once

#include <memory>
#include <optional>
#include <string>

#include <vantorium/error.hpp>

#include "client/client.hpp"
#include "model/rewardable_offer.hpp"

namespace vantorium {

/// Makes the page of one rewardable popup: the service's template, filled with an offer's values. Any thread,
/// one at a time.
class RewardablePopupController {
 public:
  RewardablePopupController(std::shared_ptr<Client> client, std::shared_ptr<RewardableOffer> offer)
      : client_(std::move(client)), offer_(std::move(offer)) {}

  /// The template with the offer's values in it. None when `filledTemplate` gives up.
  std::optional<std::string> processHTML(const std::string& html) const;

  /// Writes the page to the cache, on the calling thread, and keeps the offer for the placement. Returns the
  /// failure, reported; the offer is then left out.
  std::optional<Error> prepare(const std::string& placementID, const std::string& html) const;

 private:
  std::optional<Error> writePage(const std::string& html) const;

  const std::shared_ptr<Client> client_;
  const std::shared_ptr<RewardableOffer> offer_;
};

}  // namespace vantorium
