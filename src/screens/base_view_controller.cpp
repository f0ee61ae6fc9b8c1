#include "screens/base_view_controller.hpp"

#include <numbers>
#include <utility>

#include "platform/ui/controls.hpp"

namespace vantorium {

namespace {

/// How many quarter turns, clockwise, a reading is away from portrait. Interface and device readings of the
/// same number are the same way up.
std::optional<int> quarterTurns(int orientation) {
  switch (orientation) {
    case 1:
      return 0;
    case 2:
      return 2;
    case 3:
      return 1;
    case 4:
      return 3;
    default:
      return std::nullopt;
  }
}

/// The turn that shows a view upright when the interface and the device are held this way; none when the
/// device's reading says nothing.
std::optional<double> rotationAngle(ui::InterfaceOrientation interface, ui::DeviceOrientation device) {
  const auto from = quarterTurns(static_cast<int>(interface));
  const auto to = quarterTurns(static_cast<int>(device));
  if (!from || !to) return std::nullopt;
  constexpr double pi = std::numbers::pi;
  switch ((*to - *from + 4) % 4) {
    case 1:
      return pi / 2;
    case 2:
      return pi;
    case 3:
      return -pi / 2;
    default:
      return 0;
  }
}

Error windowClosed() { return VantoriumError::internalError("The window that showed the ad was closed."); }

}  // namespace

BaseViewController::BaseViewController(std::shared_ptr<SdkContext> context)
    : ViewController(context->host().application()), context_(std::move(context)) {}

BaseViewController::~BaseViewController() {
  // It waited for a transition of a screen that went.
  if (completion_) completion_(false, windowClosed());
}

void BaseViewController::showOverScreen(std::optional<VantoriumServerParameter> serverParameter,
                                        Completion completion) {
  completion_ = std::move(completion);
  serverParameter_ = std::move(serverParameter);
  const auto topMost = ui::topMostViewController(application());
  if (!topMost) {
    failToPresent();
    return;
  }
  const auto self = std::static_pointer_cast<BaseViewController>(shared_from_this());
  topMost->whenTransitionCompletes([self] {
    // Looked up again: the transition may have brought another screen to the front.
    const auto front = ui::topMostViewController(self->application());
    if (front && !self->hasEnded_) front->present(self, false);
    if (self->presentingViewController() == nullptr) self->failToPresent();
  });
}

void BaseViewController::failToPresent() {
  if (hasEnded_) return;
  context_->updateFlags([](SdkContext::Flags& flags) {
    flags.isShowingAds = false;
    flags.showingPlacement.reset();
  });
  fail(VantoriumError::internalError("Can't find top most view controller to show ads."));
}

void BaseViewController::viewDidLoad() {
  orientationObservation_ =
      application().observe(ui::ApplicationEvent::deviceOrientationDidChange, [weak = weak_from_this()] {
        if (const auto self = std::static_pointer_cast<BaseViewController>(weak.lock())) {
          self->deviceOrientationDidChange();
        }
      });
  showTestModeLabelIfNeeded();
}

void BaseViewController::viewDidAppear(bool /*animated*/) { deviceOrientationDidChange(); }

void BaseViewController::viewDidDisappear() { end(false, windowClosed()); }

void BaseViewController::viewWillTransition(ui::Size size) {
  ViewController::viewWillTransition(size);
  deviceOrientationDidChange();
}

void BaseViewController::end(bool success, std::optional<Error> error) {
  if (std::exchange(hasEnded_, true)) return;
  const auto self = shared_from_this();
  dismiss(false);
  if (const auto completion = std::exchange(completion_, nullptr)) completion(success, std::move(error));
}

void BaseViewController::fail(const Error& error) {
  if (hasEnded_) return;
  const auto context = context_;
  end(false, error);
  context->logError(error.errorMessage());
}

void BaseViewController::showTestModeLabelIfNeeded() {
  if (!context_->flags().isTestMode) return;
  const auto label = std::make_shared<ui::Label>();
  label->setText("TEST MODE");
  label->setFontSize(40);
  label->setAlignment(ui::TextAlignment::center);
  label->setTextColor(ui::Color::black());
  label->setBackgroundColor(ui::Color::white(0.6));
  const auto root = view().shared_from_this();
  root->addSubview(label);
  using ui::LayoutAttribute;
  for (const auto attribute :
       {LayoutAttribute::leading, LayoutAttribute::trailing, LayoutAttribute::centerY}) {
    root->addConstraint({label, attribute, root, attribute, 1, 0});
  }
  root->addConstraint({label, LayoutAttribute::height, {}, LayoutAttribute::none, 1, 100});
}

ui::DeviceOrientation BaseViewController::effectiveDeviceOrientation() {
  const ui::DeviceOrientation device = application().deviceOrientation();
  if (supportedOrientations() == OrientationMask::portrait) return ui::DeviceOrientation::portrait;
  if (supportedOrientations() == OrientationMask::all) return device;
  const bool isLandscape =
      device == ui::DeviceOrientation::landscapeLeft || device == ui::DeviceOrientation::landscapeRight;
  if (isLandscape) {
    lastDeviceOrientation_ = device;
  } else if (!lastDeviceOrientation_) {
    lastDeviceOrientation_ = ui::DeviceOrientation::landscapeRight;
  }
  return *lastDeviceOrientation_;
}

void BaseViewController::deviceOrientationDidChange() {
  const auto angle = rotationAngle(application().interfaceOrientation(), effectiveDeviceOrientation());
  if (angle) view().setTransform(ui::AffineTransform::rotation(*angle));
  const ui::Rect screen = application().screenBounds();
  view().setFrame({0, 0, screen.width, screen.height});
}

}  // namespace vantorium
