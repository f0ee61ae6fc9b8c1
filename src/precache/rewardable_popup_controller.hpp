#pragma once

#include <functional>
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
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  RewardablePopupController(std::shared_ptr<Client> client, std::shared_ptr<RewardableOffer> offer)
      : client_(std::move(client)), offer_(std::move(offer)) {}

  /// The template with the offer's values in it. None when the page would have more than `largestPage` bytes.
  std::optional<std::string> processHTML(std::string html) const;

  /// Writes the page to the cache, on the calling thread, and keeps the offer for the placement. Completes
  /// later on the main queue; a failure is reported, and leaves the offer out.
  void prepare(const std::string& placementID, const std::string& html, Completion completion) const;

 private:
  std::optional<Error> writePage(const std::string& html) const;

  const std::shared_ptr<Client> client_;
  const std::shared_ptr<RewardableOffer> offer_;
};

}  // namespace vantorium
