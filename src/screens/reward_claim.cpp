#include "screens/reward_claim.hpp"

#include <fmt/format.h>

#include <utility>

namespace vantorium {

namespace {

constexpr Seconds firstPause{5}, longestPause{600};

/// Whether neither yes nor no was heard: nobody was reached, or what came was a gateway's error page, say. An
/// exchange that the SDK's end has cancelled, or that it may not make, is not to be repeated.
bool isUnanswered(const std::optional<Error>& error) {
  constexpr int cancelled = 42;  // CURLE_ABORTED_BY_CALLBACK
  if (!error || VantoriumError::is(*error, VantoriumError::notConfiguredCode)) return false;
  return error->domain() != "curl" || error->code() != cancelled;
}

}  // namespace

void RewardClaim::start(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
                        std::string placement, std::int64_t amount) {
  std::make_shared<RewardClaim>(std::move(context), std::move(httpClient), std::move(placement), amount)
      ->ask();
}

RewardClaim::RewardClaim(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
                         std::string placement, std::int64_t amount)
    : context_(std::move(context)),
      httpClient_(std::move(httpClient)),
      placement_(std::move(placement)),
      amount_(amount),
      retry_(context_, firstPause, longestPause) {}

void RewardClaim::ask() {
  httpClient_->canReward(placement_,
                         [self = shared_from_this()](bool isGranted, const std::optional<Error>& error) {
                           if (isGranted) self->grant();
                           if (isUnanswered(error)) self->retry_.schedule([self] { self->ask(); });
                         });
}

void RewardClaim::grant() const {
  context_->printLog(fmt::format("Did receive reward: {} for placement: {}", amount_, placement_));
  context_->tellDelegate(DelegateMethod::didReceiveReward,
                         [placement = placement_, amount = amount_](VantoriumDelegate& delegate) {
                           delegate.didReceiveReward(placement, amount);
                         });
}

}  // namespace vantorium
