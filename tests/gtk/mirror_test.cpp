#include <numbers>

#include "gtk/support/desktop.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium::test {
namespace {

constexpr double quarterTurn = std::numbers::pi / 2;

/// A screen with one button of 60 × 40 in its upper left corner.
class ButtonScreen : public ui::ViewController {
 public:
  using ViewController::ViewController;

  std::shared_ptr<ui::Button> button = std::make_shared<ui::Button>();
  int taps = 0, backs = 0, resizes = 0;

  bool handleBack() override { return ++backs > 0; }
  void viewDidTransition() override { ++resizes; }

  /// As ad screens do it when the device turns.
  void turn(double angle) {
    view().setTransform(ui::AffineTransform::rotation(angle));
    view().setFrame(application().screenBounds());
  }

 protected:
  void viewDidLoad() override {
    view().setBackgroundColor(ui::Color::black());
    button->setFrame({10, 20, 60, 50});
    button->setTitle("Go");
    button->setAccessibilityLabel("Go on");
    button->setAction([this] { ++taps; });
    view().addSubview(button);
  }
};

class MirrorTest : public DesktopTest {
 protected:
  MirrorTest() { present(screen); }

  GtkButton* buttonAt(double x, double y) {
    for (Gtk::Widget* each = widgetAt(x, y); each != nullptr; each = each->get_parent()) {
      if (GTK_IS_BUTTON(each->gobj())) return GTK_BUTTON(each->gobj());
    }
    return nullptr;
  }

  std::shared_ptr<ButtonScreen> screen = std::make_shared<ButtonScreen>(host->application());
};

TEST_F(MirrorTest, TouchesLandWhereThingsLookHoweverTheScreenIsTurned) {
  struct Case {
    double angle, x, y;
  };
  // The middle of the button at (40, 45) of the screen, after the turn of a 400 × 600 window.
  for (const Case& each : {Case{0, 40, 45}, Case{quarterTurn, 400 - 45, 40}, Case{-quarterTurn, 45, 600 - 40},
                           Case{2 * quarterTurn, 400 - 40, 600 - 45}}) {
    screen->turn(each.angle);
    draw();
    GtkButton* const found = buttonAt(each.x, each.y);
    ASSERT_NE(found, nullptr) << "turned by " << each.angle;
    const int before = screen->taps;
    EXPECT_TRUE(click(each.x, each.y, [&] { return screen->taps > before; })) << "turned by " << each.angle;
    EXPECT_EQ(screen->taps, before + 1);
    EXPECT_EQ(buttonAt(200, 300), nullptr) << "the application's button shows through";
  }
}

TEST_F(MirrorTest, FollowsTheTree) {
  auto below = std::make_shared<ui::Button>(ui::Rect{100, 100, 80, 60});
  auto cover = std::make_shared<ui::View>(ui::Rect{90, 90, 100, 100});
  screen->view().addSubview(below);
  screen->view().addSubview(cover);
  draw();
  EXPECT_EQ(buttonAt(120, 120), nullptr) << "what lies in front takes the touch";

  cover->setHidden(true);
  draw();
  GtkButton* const shown = buttonAt(120, 120);
  ASSERT_NE(shown, nullptr);
  below->setFrame({200, 300, 80, 60});
  draw();
  EXPECT_EQ(buttonAt(120, 120), nullptr);
  EXPECT_EQ(buttonAt(240, 330), shown) << "a view keeps its widget";

  below->removeFromSuperview();
  draw();
  EXPECT_EQ(buttonAt(240, 330), nullptr);
}

TEST_F(MirrorTest, TapsGoToTheInnermostViewThatKnowsThem) {
  auto outer = std::make_shared<ui::View>(ui::Rect{50, 200, 300, 300});
  auto inner = std::make_shared<ui::View>(ui::Rect{0, 0, 100, 100});
  auto label = std::make_shared<ui::Label>(ui::Rect{0, 0, 100, 100});
  auto button = std::make_shared<ui::Button>(ui::Rect{200, 200, 100, 100});
  int outerTaps = 0, innerTaps = 0, buttonTaps = 0;
  outer->addTapRecognizer([&] { ++outerTaps; });
  inner->addTapRecognizer([&] { ++innerTaps; });
  button->setAction([&] { ++buttonTaps; });
  label->setText("Tap");
  inner->addSubview(label);
  outer->addSubview(inner);
  outer->addSubview(button);
  screen->view().addSubview(outer);
  draw();
  EXPECT_TRUE(click(100, 250, [&] { return innerTaps == 1; }));
  EXPECT_TRUE(click(300, 450, [&] { return buttonTaps == 1; }));
  EXPECT_EQ(outerTaps, 0);
  EXPECT_TRUE(click(250, 300, [&] { return outerTaps == 1; }));
  EXPECT_EQ(innerTaps + buttonTaps, 2);
}

TEST_F(MirrorTest, SmallButtonsTakeAFingersWidth) {
  screen->button->setFrame({100, 100, 20, 20});
  draw();
  EXPECT_NE(buttonAt(90, 90), nullptr);
  EXPECT_EQ(buttonAt(84, 84), nullptr);
}

TEST_F(MirrorTest, KeepsFocusInTheAdAndGivesItBack) {
  Gtk::Widget* const focus = window.get_focus();
  ASSERT_NE(focus, nullptr);
  EXPECT_EQ(focus->gobj(), GTK_WIDGET(buttonAt(40, 45)));
  EXPECT_FALSE(content.grab_focus()) << "the application's own widgets take no input under an ad";

  auto sheet = std::make_shared<ButtonScreen>(host->application());
  screen->present(sheet, false);
  draw();
  EXPECT_NE(window.get_focus(), focus) << "the front-most screen has the focus";

  sheet->dismiss(false);
  draw();
  EXPECT_EQ(window.get_focus(), focus);
  screen->dismiss(false);
  draw();
  EXPECT_EQ(window.get_focus(), &content);
}

TEST_F(MirrorTest, ResizingTheWindowResizesItsScreens) {
  window.set_default_size(500, 640);
  ASSERT_TRUE(waitFor([&] { return screen->view().bounds().width == 500; }));
  EXPECT_EQ(screen->view().bounds().height, 640);
  EXPECT_GE(screen->resizes, 1);
}

TEST_F(MirrorTest, AnotherContentIsCoveredToo) {
  Gtk::Entry other;
  window.set_child(other);
  draw();
  EXPECT_FALSE(other.grab_focus());
  EXPECT_NE(buttonAt(40, 45), nullptr);
  screen->dismiss(false);
  draw();
  EXPECT_TRUE(other.grab_focus());
  EXPECT_EQ(buttonAt(40, 45), nullptr);
}

TEST_F(DesktopTest, HiddenAndDestroyedWindowsTakeNoAd) {
  auto& application = host->application();
  int backgrounds = 0, foregrounds = 0;
  const auto leaving = application.observe(ui::ApplicationEvent::didEnterBackground, [&] { ++backgrounds; });
  const auto coming = application.observe(ui::ApplicationEvent::willEnterForeground, [&] { ++foregrounds; });
  window.set_visible(false);
  EXPECT_EQ(application.rootViewController(), nullptr);
  EXPECT_EQ(backgrounds, 1);
  window.set_visible(true);
  EXPECT_NE(application.rootViewController(), nullptr);
  EXPECT_EQ(foregrounds, 1);
  {
    Gtk::Label label("Second");
    Gtk::Window second;
    second.set_child(label);
    gtk::attach(*host, second);
    second.set_visible(true);
    draw();
    EXPECT_EQ(second.get_child(), label.get_parent()) << "the content keeps its place under the ads";
    auto screen = std::make_shared<ButtonScreen>(application);
    present(screen);
    EXPECT_TRUE(screen->view().window() != nullptr);
  }
  draw();
  EXPECT_NE(application.rootViewController(), nullptr);
  window.destroy();
  settle();
  EXPECT_EQ(application.rootViewController(), nullptr);
}

TEST_F(MirrorTest, ABackKeyGoesToTheFrontmostScreen) {
  auto* const keys = [&]() -> GtkEventController* {
    const auto controllers = window.observe_controllers();
    for (guint i = 0; i < controllers->get_n_items(); ++i) {
      auto* const each = GTK_EVENT_CONTROLLER(g_list_model_get_object(controllers->gobj(), i));
      g_object_unref(each);
      if (GTK_IS_EVENT_CONTROLLER_KEY(each) &&
          gtk_event_controller_get_propagation_phase(each) == GTK_PHASE_CAPTURE) {
        return each;
      }
    }
    return nullptr;
  }();
  ASSERT_NE(keys, nullptr);
  const auto press = [&](guint key) {
    gboolean taken = FALSE;
    g_signal_emit_by_name(keys, "key-pressed", key, 0U, static_cast<GdkModifierType>(0), &taken);
    return taken != FALSE;
  };
  EXPECT_TRUE(press(GDK_KEY_Escape));
  EXPECT_TRUE(press(GDK_KEY_Back));
  EXPECT_EQ(screen->backs, 2);
  EXPECT_FALSE(press(GDK_KEY_a));
  screen->dismiss(false);
  draw();
  EXPECT_FALSE(press(GDK_KEY_Escape)) << "without an ad the key is the application's";
}

}  // namespace
}  // namespace vantorium::test
