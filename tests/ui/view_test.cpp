#include <gtest/gtest.h>

#include <numbers>

#include "hosts/headless/headless_host.hpp"
#include "platform/ui/controls.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::ui {
namespace {

TEST(View, TurnedViewFillsItsFrame) {
  const auto view = std::make_shared<View>();
  view->setTransform(AffineTransform::rotation(-std::numbers::pi / 2));
  view->setFrame({0, 0, 390, 844});
  EXPECT_NEAR(view->bounds().width, 844, 1e-9);
  EXPECT_NEAR(view->bounds().height, 390, 1e-9);
  EXPECT_EQ(view->center(), (Point{195, 422}));
  EXPECT_NEAR(view->frame().width, 390, 1e-9);
}

TEST(View, MovesBetweenParentsAndSurvivesThem) {
  auto first = std::make_shared<View>();
  const auto second = std::make_shared<View>();
  const auto child = std::make_shared<View>();
  first->addSubview(child);
  first->addSubview(child);
  EXPECT_EQ(first->subviews().size(), 1U);
  second->addSubview(child);
  EXPECT_TRUE(first->subviews().empty());
  EXPECT_EQ(child->superview(), second.get());
  first->addSubview(child);
  first.reset();
  EXPECT_EQ(child->superview(), nullptr);
}

TEST(Constraints, PlaceByEdgesCentresAndSizes) {
  const auto root = std::make_shared<View>(Rect{0, 0, 300, 200});
  const auto bar = std::make_shared<View>(Rect{0, 0, 10, 10});
  const auto follower = std::make_shared<View>();
  root->addSubview(bar);
  root->addSubview(follower);
  root->addConstraint({bar, LayoutAttribute::leading, root, LayoutAttribute::leading, 1, 20});
  root->addConstraint({bar, LayoutAttribute::trailing, root, LayoutAttribute::trailing, 1, -20});
  root->addConstraint({bar, LayoutAttribute::centerY, root, LayoutAttribute::centerY, 1, 0});
  root->addConstraint({bar, LayoutAttribute::height, {}, LayoutAttribute::none, 1, 100});
  root->addConstraint({follower, LayoutAttribute::left, bar, LayoutAttribute::left, 1, 0});
  root->addConstraint({follower, LayoutAttribute::width, bar, LayoutAttribute::width, 0.5, 0});
  root->addConstraint({follower, LayoutAttribute::top, bar, LayoutAttribute::bottom, 1, 8});
  root->addConstraint({follower, LayoutAttribute::height, {}, LayoutAttribute::none, 1, 10});
  root->layoutIfNeeded();
  EXPECT_EQ(bar->frame(), (Rect{20, 50, 260, 100}));
  EXPECT_EQ(follower->frame(), (Rect{20, 158, 130, 10}));
}

TEST(Window, IsCommittedOncePerTurn) {
  testing::TemporaryDirectory home;
  headless::Host host({.home = home.path()});
  struct Counter : View {
    int layouts = 0;
    void layoutSubviews() override { ++layouts; }
  };
  const auto view = std::make_shared<Counter>();
  host.application().rootViewController()->view().window()->addSubview(view);
  view->setFrame({0, 0, 10, 10});
  view->setNeedsLayout();
  host.loop().runPending();
  EXPECT_EQ(view->layouts, 1);
  view->setHidden(true);
  host.loop().runPending();
  EXPECT_EQ(view->layouts, 1) << "hiding places nothing anew";
}

TEST(Application, RefusesTargetsThatReachInwards) {
  testing::TemporaryDirectory home;
  headless::Host host({.home = home.path()});
  for (const char* url :
       {"file:///etc/passwd", "JavaScript:alert(1)", "data:text/html,x", "page.html", "", "two words"}) {
    std::optional<bool> opened;
    host.application().openURL(url, [&](bool result) { opened = result; });
    EXPECT_EQ(opened, false) << url;
  }
  std::optional<bool> opened;
  host.application().openURL("https://shop.example/", [&](bool result) { opened = result; });
  EXPECT_EQ(opened, true);
}

TEST(MainLoop, VirtualTimeRunsTimersInOrder) {
  testing::TemporaryDirectory home;
  headless::Host host({.home = home.path()});
  std::vector<int> order;
  std::unique_ptr<Timer> repeating;
  auto late = host.clock().schedule(Seconds{1}, false, [&] { order.push_back(2); });
  auto early = host.clock().schedule(Seconds{0.5}, false, [&] { order.push_back(1); });
  auto dropped = host.clock().schedule(Seconds{0.7}, false, [&] { order.push_back(9); });
  repeating = host.clock().schedule(Seconds{0.2}, true, [&] {
    order.push_back(0);
    if (order.size() == 4) repeating.reset();  // inside its own handler
  });
  dropped.reset();
  const Date before = host.clock().now();
  host.advance(5);
  EXPECT_EQ(order, (std::vector<int>{0, 0, 1, 0, 2})) << "dropped too late or run out of order";
  EXPECT_EQ(host.clock().now() - before, std::chrono::seconds(5));
}

}  // namespace
}  // namespace vantorium::ui
