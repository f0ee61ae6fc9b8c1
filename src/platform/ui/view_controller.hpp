#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <vantorium/export.h>

#include "platform/ui/view.hpp"

namespace vantorium::ui {

class Application;

/// A screen: owns a root view, is presented over another screen and hears of its life. Main thread only; made
/// with `std::make_shared`. A presenting controller owns the one it presents.
class VANTORIUM_HOST_API ViewController : public std::enable_shared_from_this<ViewController> {
 public:
  explicit ViewController(Application& application) : application_(application) {}
  virtual ~ViewController();
  ViewController(const ViewController&) = delete;
  ViewController& operator=(const ViewController&) = delete;

  /// The name of the concrete class, as events and snapshots write it.
  virtual const char* className() const { return "ViewController"; }

  /// The root view; the first call makes it (`loadView`) and then calls `viewDidLoad`.
  View& view();
  bool isViewLoaded() const { return view_ != nullptr; }

  /// Shows `screen` over this one, which must be in a window and present nothing else; otherwise nothing
  /// happens.
  void present(const std::shared_ptr<ViewController>& screen, bool animated);
  /// Takes this screen, and all it presents, off the window. Nothing happens when it is not presented.
  void dismiss(bool animated);

  std::shared_ptr<ViewController> presentedViewController() const { return presented_; }
  ViewController* presentingViewController() const { return presenting_; }

  /// Whether a presentation or another change of this screen is still moving.
  bool isInTransition() const { return inTransition_; }
  /// Calls `handler` when the running transition ends; at once when none runs.
  void whenTransitionCompletes(std::function<void()> handler);
  /// For hosts: a transition of the application's own starts or ends.
  void beginTransition() { inTransition_ = true; }
  void completeTransition();

  /// Escape, a back gesture or a back key: returns whether the screen took it. The base takes nothing.
  virtual bool handleBack() { return false; }

  virtual bool prefersStatusBarHidden() const { return false; }

 protected:
  /// Makes the root view. The base makes an empty one.
  virtual std::shared_ptr<View> loadView();
  virtual void viewDidLoad() {}
  virtual void viewDidAppear(bool /*animated*/) {}
  /// The screen was taken off its window, by itself or because the window goes.
  virtual void viewDidDisappear() {}
  virtual void viewDidLayoutSubviews() {}
  /// The window changes its size. The base resizes the root view, then calls `viewDidTransition`.
  virtual void viewWillTransition(Size size);
  /// A size transition is complete.
  virtual void viewDidTransition() {}

  Application& application() const { return application_; }

 private:
  friend class View;
  friend class Window;

  Application& application_;
  std::shared_ptr<View> view_;
  std::shared_ptr<ViewController> presented_;
  ViewController* presenting_ = nullptr;
  bool inTransition_ = false;
  std::vector<std::function<void()>> transitionHandlers_;
};

/// The screen over everything else: the root of the application's key window, followed through what it
/// presents. Null when there is no key window or it has no root.
std::shared_ptr<ViewController> topMostViewController(Application& application);

}  // namespace vantorium::ui
