#include "gtk/support/desktop.hpp"

namespace vantorium::test {
namespace {

constexpr const char* clip = VANTORIUM_SOURCE_DIR "/tools/sandbox/catalogue/media/sky-harbor.mp4";

class PlayerTest : public DesktopTest {
 protected:
  std::shared_ptr<MediaPlayer> open(const std::string& path) {
    auto player = host->makePlayer(path);
    MediaPlayer::Handlers handlers;
    handlers.didPlayToEnd = [this] { ++ends; };
    handlers.didFailToPlayToEnd = [this] { ++breaks; };
    handlers.didFail = [this] { ++failures; };
    handlers.presentationSizeDidChange = [this] { ++sizes; };
    handlers.periodicTime = [this](double time) { times.push_back(time); };
    handlers.tickInterval = 0.1;
    player->setHandlers(std::move(handlers));
    player->prepare();
    return player;
  }

  int ends = 0, breaks = 0, failures = 0, sizes = 0;
  std::vector<double> times;
};

TEST_F(PlayerTest, PlaysToTheEndAndAgain) {
  const auto player = open(clip);
  EXPECT_FALSE(player->isPlaying());
  player->setMuted(true);
  ASSERT_TRUE(waitFor([&] { return player->duration() > 1 && sizes > 0; }));
  EXPECT_GT(player->presentationSize().width, 0);
  EXPECT_TRUE(times.empty()) << "time stands still until it plays";
  EXPECT_EQ(player->currentTime(), 0);

  for (int round = 1; round <= 2; ++round) {
    player->seek(0);
    player->play();
    EXPECT_TRUE(player->isPlaying());
    ASSERT_TRUE(waitFor([&] { return player->currentTime() > 0.3 && player->currentTime() < 5; }));
    player->seek(player->duration() - 0.5, true);
    EXPECT_NEAR(player->currentTime(), player->duration() - 0.5, 0.01)
        << "at once, as far as callers can tell";
    ASSERT_TRUE(waitFor([&] { return ends == round; }));
    EXPECT_FALSE(player->isPlaying());
  }
  EXPECT_FALSE(times.empty());
  const auto ticks = times.size();
  settle();
  EXPECT_EQ(times.size(), ticks);
  EXPECT_TRUE(player->isMuted());
  EXPECT_FALSE(player->error());
  EXPECT_EQ(failures + breaks, 0);
}

TEST_F(PlayerTest, PausesAndGoesOn) {
  const auto player = open(clip);
  player->play();
  ASSERT_TRUE(waitFor([&] { return player->currentTime() > 0.2; }));
  player->pause();
  EXPECT_FALSE(player->isPlaying());
  player->seek(3);
  ASSERT_TRUE(waitFor([&] { return !times.empty() && times.back() > 2.5; })) << "told of the jump";
  EXPECT_NEAR(player->currentTime(), 3, 0.5);
  player->play();
  ASSERT_TRUE(waitFor([&] { return player->currentTime() > 3.2; }));
}

TEST_F(PlayerTest, WhatCannotBePlayedFails) {
  for (const std::string& path : {write("noise.mp4", std::string(5000, '\x5A')), write("empty.mp4", ""),
                                  (folder.path() / "missing.mp4").string()}) {
    failures = 0;
    const auto player = open(path);
    player->play();
    ASSERT_TRUE(waitFor([&] { return failures > 0; })) << path;
    EXPECT_EQ(failures, 1);
    EXPECT_TRUE(player->error());
    player->play();
    EXPECT_FALSE(player->isPlaying());
  }
  EXPECT_EQ(ends + breaks, 0);
}

TEST_F(PlayerTest, MayBeDestroyedInItsOwnHandler) {
  auto player = host->makePlayer(clip);
  bool ended = false;
  MediaPlayer::Handlers handlers;
  handlers.didPlayToEnd = [&] {
    ended = true;
    player.reset();
  };
  player->setHandlers(std::move(handlers));
  player->prepare();
  ASSERT_TRUE(waitFor([&] { return player->duration() > 0; }));
  player->seek(player->duration() - 0.3);
  player->play();
  ASSERT_TRUE(waitFor([&] { return ended; }));
  settle();
}

}  // namespace
}  // namespace vantorium::test
