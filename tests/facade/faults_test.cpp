#include <gtest/gtest.h>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

struct Case {
  const char* name;
  json fault;
};

void PrintTo(const Case& each, std::ostream* out) { *out << each.name; }

const std::vector<Case> faults{
    {"noFill", {{"fault", "noFill"}}},
    {"serviceError", {{"fault", "serviceError"}, {"text", "closed for today"}}},
    {"notJSON", {{"fault", "notJSON"}}},
    {"wrongEnvelope", {{"fault", "wrongTypes"}, {"where", "envelope"}}},
    {"wrongFields", {{"fault", "wrongTypes"}, {"where", "fields"}}},
    {"successWithStatus500", {{"fault", "successWithStatus500"}}},
    {"delay", {{"fault", "delay"}, {"seconds", 0.1}}},
    {"bodyCutShort", {{"fault", "bodyCutShort"}}},
    {"bodyTruncated", {{"fault", "bodyTruncated"}}},
    {"connectionReset", {{"fault", "connectionReset"}}},
    {"resetInTheBody", {{"fault", "connectionReset"}, {"afterBytes", 5}}},
    {"neverAnswers", {{"fault", "neverAnswers"}}},
    {"serverCloses", {{"fault", "serverCloses"}}},
    {"endlessBody", {{"fault", "endlessBody"}}},
    {"redirectLoop", {{"fault", "redirectLoop"}}},
    {"redirectToFile", {{"fault", "redirect"}, {"to", "file:///etc/passwd"}}},
    {"redirectToFTP", {{"fault", "redirect"}, {"to", "ftp://127.0.0.1/x"}}},
    {"emptyBody", {{"fault", "emptyBody"}}},
    {"hugeHeaders", {{"fault", "hugeHeaders"}}},
    {"deepJSON", {{"fault", "deepJSON"}}},
    {"notFound", {{"fault", "notFound"}}},
};

/// Strikes each stage of the road to a ready campaign with each fault, and prints what the application heard.
struct Faults : ::testing::TestWithParam<Case> {
  Faults() {
    ServiceConfiguration configuration;
    configuration.baseURL = world.server.baseURL();
    // Only what is silent for ever is given up soon: a busy machine may be silent for a while.
    if (GetParam().fault["fault"] == "neverAnswers")
      configuration.limits.idleTimeout = std::chrono::seconds(1);
    configuration.limits.bodyBytes = 2 * 1024 * 1024;
    world.sdk->setServiceConfiguration(configuration);
    world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = false; });
  }
  void strike(const std::string& path) {
    json fault = GetParam().fault;
    fault["path"] = path;
    world.server.setFaults(fault);
  }
  /// Runs until the call has completed, and a little on, in case it completes again. Gives what was heard.
  std::string outcome(const std::string& name) {
    const auto completed = [&](const std::string& line) { return line.starts_with(name + " "); };
    world.host->loop().runUntil(
        [&] { return std::any_of(world.lines.begin(), world.lines.end(), completed); });
    world.host->loop().runPending();
    EXPECT_EQ(std::count_if(world.lines.begin(), world.lines.end(), completed), 1)
        << "completions of " << name;
    const auto line = std::find_if(world.lines.begin(), world.lines.end(), completed);
    const std::string heard = line == world.lines.end() ? "nothing" : line->substr(name.size() + 1);
    world.lines.clear();
    return heard;
  }
  void tell(const char* stage, const std::string& heard) {
    fmt::print("    {:<20} {:<10} {}\n", GetParam().name, stage, heard);
  }
  bool hasPartialFiles() const {
    // The workers remove other folders meanwhile.
    std::error_code none;
    const auto spool = world.sdk->client()->cacheClient.files->root() / ".spool";
    return std::filesystem::directory_iterator(spool, none) != std::filesystem::directory_iterator();
  }
  SdkWorld world;
};

TEST_P(Faults, EndsInOneCompletionAndAWorkingClient) {
  strike("/api/init");
  world.sdk->configure("app", std::nullopt, nullptr, world.noting("configure"));
  tell("configure", outcome("configure"));
  world.server.clearFaults();
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = false; });
  world.sdk->configure("app", std::nullopt, nullptr, world.noting("configure"));
  ASSERT_EQ(outcome("configure"), "true");

  strike("/api/campaigns");
  world.sdk->precacheCampaigns("interstitial-main", nullptr, world.noting("fetch"));
  tell("fetch", outcome("fetch"));

  strike("/media/");
  world.sdk->precacheCampaigns("rewarded-main", nullptr, world.noting("video"));
  const std::string video = outcome("video");
  tell("video", video);
  EXPECT_EQ(world.sdk->isCampaignReady("rewarded-main"), video.starts_with("true"));
  EXPECT_FALSE(hasPartialFiles());

  strike("/playable/");
  world.sdk->precacheCampaigns("playable-rewarded", nullptr, world.noting("archive"));
  const std::string archive = outcome("archive");
  tell("archive", archive);
  EXPECT_EQ(world.sdk->isCampaignReady("playable-rewarded"), archive.starts_with("true"));
  EXPECT_FALSE(hasPartialFiles());

  strike("/api/canView");
  world.sdk->canView("rewarded-main", nullptr, world.noting("canView"));
  tell("canView", outcome("canView"));

  world.server.clearFaults();
  world.sdk->precacheCampaigns("rewarded-main", nullptr, world.noting("again"));
  EXPECT_EQ(outcome("again"), "true");
}

INSTANTIATE_TEST_SUITE_P(Service, Faults, ::testing::ValuesIn(faults),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace vantorium
