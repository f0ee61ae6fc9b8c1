#pragma once

#include <memory>
#include <string>

#include "cache/stored_path.hpp"
#include "model/rewardable_offer.hpp"

namespace vantorium {

/// A rewardable popup that can be shown: what it offers, and its page on disk, which goes with the last copy.
struct PreparedPopup {
  std::shared_ptr<const RewardableOffer> offer;
  std::shared_ptr<const StoredPath> folder;  ///< what the page may read
  std::string page;                          ///< the page's path
};

}  // namespace vantorium
