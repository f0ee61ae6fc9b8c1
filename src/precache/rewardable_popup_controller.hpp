#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cache/file_store.hpp"
#include "cache/prepared_popup.hpp"
#include "context/sdk_context.hpp"
#include "model/rewardable_offer.hpp"
#include "platform/foundation/result.hpp"

namespace vantorium {

/// Makes the page of one rewardable popup: the service's template, filled with an offer's values. Any thread,
/// one at a time.
class RewardablePopupController {
 public:
  RewardablePopupController(std::shared_ptr<SdkContext> context, std::shared_ptr<FileStore> files,
                            std::shared_ptr<const RewardableOffer> offer)
      : context_(std::move(context)), files_(std::move(files)), offer_(std::move(offer)) {}

  /// The template with the offer's values in it. None when `filledTemplate` gives up.
  std::optional<std::string> processHTML(const std::string& html) const;

  /// Writes the page to the cache, on the calling thread. Its folder goes with whoever is handed the result.
  /// A failure is reported.
  Result<PreparedPopup> prepare(const std::string& placementID, const std::string& html) const;

 private:
  Result<PreparedPopup> writePage(const std::string& page) const;

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<FileStore> files_;
  const std::shared_ptr<const RewardableOffer> offer_;
};

}  // namespace vantorium
