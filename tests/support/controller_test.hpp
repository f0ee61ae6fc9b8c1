#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <tuple>

#include "precache/campaign_controller.hpp"
#include "support/service_world.hpp"

namespace vantorium::testing {

/// Campaign controllers for the placement "p", in a service's world in test mode.
class ControllerTest : public ::testing::Test {
 protected:
  using Outcome = testing::Outcome<bool, std::optional<Error>>;
  using Result = std::tuple<bool, std::optional<Error>>;

  ControllerTest() {
    world_.context->updateFlags([](SdkContext::Flags& flags) { flags.isTestMode = true; });
  }

  std::shared_ptr<CampaignController> controller(const nlohmann::json& campaign) {
    return std::make_shared<CampaignController>(std::make_shared<Campaign>(campaign), world_.client(), "p");
  }
  /// Precaches on the main queue.
  Result precache(const std::shared_ptr<CampaignController>& controller) {
    Outcome outcome;
    controller->precache(nullptr, outcome.completion());
    world_.host->loop().runUntil([&] { return outcome.isThere(); });
    return outcome.get();
  }

  ServiceWorld world_;
  const Result success_{true, std::nullopt};
};

}  // namespace vantorium::testing
