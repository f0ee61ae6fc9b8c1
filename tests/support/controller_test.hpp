#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <tuple>
#include <vector>

#include "precache/campaign_controller.hpp"
#include "support/service_world.hpp"

namespace vantorium::testing {

/// Campaign controllers for the placement "p", in a service's world in test mode.
class ControllerTest : public ::testing::Test {
 protected:
  using Outcome = testing::Outcome<CampaignController::Outcome>;

  ControllerTest() {
    world_.context->updateFlags([](SdkContext::Flags& flags) { flags.isTestMode = true; });
  }

  std::shared_ptr<CampaignController> controller(const nlohmann::json& campaign) {
    return std::make_shared<CampaignController>(std::make_shared<Campaign>(campaign), world_.context,
                                                world_.cache(), unpackQueue_, "p");
  }
  /// Precaches on the main queue.
  CampaignController::Outcome precache(const nlohmann::json& campaign) {
    Outcome outcome;
    controller(campaign)->precache(nullptr, outcome.completion());
    world_.host->loop().runUntil([&] { return outcome.isThere(); });
    return std::get<0>(outcome.get());
  }
  /// The error's text for people; empty for a success.
  static std::string textOf(const CampaignController::Outcome& outcome) {
    return outcome ? "" : outcome.error()->localizedDescription();
  }
  /// What lies in the cache folder, but for the network's own.
  std::vector<std::string> filesLeft() const {
    std::vector<std::string> left;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(world_.cacheRoot(), none)) {
      if (entry.path().filename() != ".spool") left.push_back(entry.path().filename());
    }
    return left;
  }
  /// Waits for the workers to have removed what nobody owns.
  bool awaitEmptyCache() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!filesLeft().empty() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    return filesLeft().empty();
  }

  ServiceWorld world_;
  const std::shared_ptr<DispatchQueue> unpackQueue_ = DispatchQueue::serial("test.unpack");
};

}  // namespace vantorium::testing
