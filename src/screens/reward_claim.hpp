#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "context/retry.hpp"
#include "context/sdk_context.hpp"
#include "protocol/http_client.hpp"

namespace vantorium {

/// Asks the service whether the user gets the reward of one shown campaign, and tells the delegate if so.
/// When there is no answer, neither yes nor no, it asks again later, and at once when the device comes
/// online, as long as the process lives: the user has earned it. It keeps itself until there is an answer or
/// the SDK ends, whatever becomes of the screen. Any thread.
class RewardClaim : public std::enable_shared_from_this<RewardClaim> {
 public:
  /// To be called once per campaign.
  static void start(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
                    std::string placement, std::int64_t amount);

  RewardClaim(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
              std::string placement, std::int64_t amount);

 private:
  void ask();
  void grant() const;

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPClient> httpClient_;
  const std::string placement_;
  const std::int64_t amount_;
  Retry retry_;
};

}  // namespace vantorium
