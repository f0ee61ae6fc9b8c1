#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>

#include "client/client.hpp"
#include "model/campaign.hpp"

namespace vantorium {

/// Turns one campaign into files on disk. For a playable one: its archive, unpacked where it lies, and the
/// page that brings it to the screen. For any other: its video and, at the same time, its end card, whose
/// page is rewritten to refer to the local copies. A download that fails is tried twice more; an end card of
/// too many files is refused at once.
///
/// The owner keeps the controller until the completion has run; dropping it earlier ends the precache in
/// silence, in the middle of an archive too.
class CampaignController : public std::enable_shared_from_this<CampaignController> {
 public:
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  CampaignController(std::shared_ptr<Campaign> campaign, std::shared_ptr<Client> client,
                     std::string placementID);

  const std::shared_ptr<Campaign>& campaign() const { return campaign_; }

  /// Precaches the campaign. Completes at once, on the caller's thread, when its creative is on disk already;
  /// later on `queue` (null is the main queue); after another try on the main queue. Any thread.
  void precache(const std::shared_ptr<DispatchQueue>& queue, Completion completion);

 private:
  class Group;

  void precachePlayable(const std::shared_ptr<DispatchQueue>& queue, int tryCounter,
                        const Completion& completion);
  std::string playablePathToRemove() const;

  std::optional<Error> refusal() const;
  bool hasEndCard() const;
  void precacheRewardableVideo(const std::shared_ptr<DispatchQueue>& queue, int tryCounter,
                               const Completion& completion);
  void precacheVideo(const std::shared_ptr<Group>& group);
  void saveVideo(const Data& data) const;
  void precacheEndCard(const std::shared_ptr<Group>& group);
  void finishEndCard(const std::vector<std::string>& urls) const;
  void updateHTMLWithRelativeAssets(const std::string& forIndetifier,
                                    const std::vector<std::string>& assestURLs,
                                    const std::string& customImage) const;

  static constexpr int retries = 2;

  const std::shared_ptr<Campaign> campaign_;
  const std::shared_ptr<Client> client_;
  const std::string placementID_;
};

}  // namespace vantorium
