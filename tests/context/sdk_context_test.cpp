#include "context/sdk_context.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

struct SdkContextTest : ::testing::Test {
  testing::TemporaryDirectory home;
  std::shared_ptr<headless::Host> host =
      std::make_shared<headless::Host>(headless::Host::Options{.home = home.path()});
  std::shared_ptr<SdkContext> context = std::make_shared<SdkContext>(host);
};

TEST_F(SdkContextTest, TellsWhoeverIsTheDelegateWhenItsTurnComes) {
  std::vector<std::string> first, second;
  const auto delegate = std::make_shared<testing::RecordingDelegate>(second);
  const auto tell = [&] {
    context->tellDelegate(DelegateMethod::didConfigure, [](VantoriumDelegate& told) { told.didConfigure(); });
  };
  tell();  // before there is one
  context->setDelegate(delegate);
  host->loop().runPending();
  EXPECT_EQ(second.size(), 1U);
  {
    const auto gone = std::make_shared<testing::RecordingDelegate>(first);
    context->setDelegate(gone);
    tell();
  }
  host->loop().runPending();
  EXPECT_TRUE(first.empty());
  context->setDelegate(delegate);
  tell();
  context.reset();  // what was said before the end is still heard
  host->loop().runPending();
  EXPECT_EQ(second.size(), 2U);
}

TEST_F(SdkContextTest, ATokenThatIsGoneHearsNothing) {
  int heard = 0;
  auto token = context->observeOnline([&] { ++heard; });
  std::shared_ptr<void> next;
  const auto dropper = context->observeOnline([&] { next.reset(); });
  next = context->observeOnline([&] { heard += 100; });  // dropped by the one before it
  context->tellOnline();
  EXPECT_EQ(heard, 0);
  host->loop().runPending();
  EXPECT_EQ(heard, 1);
  context->tellOnline();
  token.reset();
  host->loop().runPending();
  EXPECT_EQ(heard, 1);
}

TEST_F(SdkContextTest, TheLogKeepsItsNewestLines) {
  context->updateFlags([](SdkContext::Flags& flags) { flags.isTestMode = true; });
  context->printLog("first");
  EXPECT_TRUE(context->log().ends_with(" : first\n"));
  EXPECT_EQ(std::ranges::count(context->log(), '\n'), 1);
  const std::string thousand(1000, 'x');
  for (int i = 0; i < 1100; ++i) context->printLog(thousand);
  context->printLog("last");
  const std::string log = context->log();
  const std::string notice = DiagnosticLog::dropNotice;
  EXPECT_TRUE(log.starts_with(notice + "VANTORIUM LOG: 0:00:00")) << log.substr(0, 200);
  EXPECT_TRUE(log.ends_with(" : last\n"));
  EXPECT_LE(log.size(), DiagnosticLog::mostBytes + notice.size());
  EXPECT_GT(log.size(), DiagnosticLog::mostBytes - 2000);
}

}  // namespace
}  // namespace vantorium
