#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <vantorium/error.hpp>
#include <vantorium/options.hpp>

#include "context/sdk_context.hpp"
#include "platform/ui/view_controller.hpp"

namespace vantorium {

/// Which ways up a screen can be shown.
enum class OrientationMask { all, portrait, landscape };

/// The base of every full-screen ad screen: shows itself over whatever the application shows, keeps the
/// completion that ends the showing, follows the device's orientation by turning its root view, and wears the
/// test-mode banner. Main thread only.
class BaseViewController : public ui::ViewController {
 public:
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  explicit BaseViewController(std::shared_ptr<SdkContext> context);
  ~BaseViewController() override;

  /// Presents the screen, after a running transition of the screen below. The completion is called once, on
  /// the main thread: when the ad ends, or at once when there is nothing to present over.
  void showOverScreen(std::optional<VantoriumServerParameter> serverParameter, Completion completion);

  /// Takes the screen away because the SDK ends; the completion hears the error.
  void cancel(const Error& error) { end(false, error); }

  bool prefersStatusBarHidden() const override { return true; }

 protected:
  virtual OrientationMask supportedOrientations() const { return OrientationMask::all; }
  /// Turns the root view to the device's orientation. Called when that changes and when the screen has
  /// appeared.
  virtual void deviceOrientationDidChange();

  void viewDidLoad() override;
  void viewDidAppear(bool animated) override;
  void viewDidDisappear() override;
  void viewWillTransition(ui::Size size) override;

  /// Ends the ad: takes the screen away and calls the completion. Only the first call does anything. The
  /// screen may be released by the time this returns.
  void end(bool success, std::optional<Error> error);
  /// Ends the ad with a failure and reports it.
  void fail(const Error& error);
  bool hasEnded() const { return hasEnded_; }

  SdkContext& context() const { return *context_; }
  const std::shared_ptr<SdkContext>& sharedContext() const { return context_; }
  const std::optional<VantoriumServerParameter>& serverParameter() const { return serverParameter_; }

 private:
  void failToPresent();
  void showTestModeLabelIfNeeded();
  ui::DeviceOrientation effectiveDeviceOrientation();

  const std::shared_ptr<SdkContext> context_;
  Completion completion_;
  bool hasEnded_ = false;
  std::optional<VantoriumServerParameter> serverParameter_;
  std::optional<ui::DeviceOrientation> lastDeviceOrientation_;
  std::shared_ptr<ui::Application::Observation> orientationObservation_;
};

}  // namespace vantorium
