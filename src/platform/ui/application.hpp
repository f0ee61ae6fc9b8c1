#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <vantorium/export.h>

#include "platform/ui/geometry.hpp"

namespace vantorium::ui {

class ViewController;

/// The numbers are those of the platform's orientation readings.
enum class InterfaceOrientation {
  portrait = 1,
  portraitUpsideDown = 2,
  landscapeRight = 3,
  landscapeLeft = 4
};
enum class DeviceOrientation {
  unknown = 0,
  portrait = 1,
  portraitUpsideDown = 2,
  landscapeLeft = 3,
  landscapeRight = 4,
  faceUp = 5,
  faceDown = 6
};

enum class ApplicationEvent { didEnterBackground, willEnterForeground, deviceOrientationDidChange };

/// The application that the SDK lives in: its front window, the device's orientation and the way to other
/// applications. Implemented by a host; main thread only.
class VANTORIUM_HOST_API Application {
 public:
  virtual ~Application() = default;

  /// The root screen of the key window: a stand-in for the application's own interface, over which ads are
  /// presented. Null when no window can take an ad.
  virtual std::shared_ptr<ViewController> rootViewController() = 0;
  /// The area an ad may cover, origin zero.
  virtual Rect screenBounds() const = 0;
  virtual InterfaceOrientation interfaceOrientation() const = 0;
  virtual DeviceOrientation deviceOrientation() const = 0;

  /// The screen was put on or taken off the key window.
  virtual void didPresent(ViewController& /*screen*/, bool /*animated*/) {}
  virtual void didDismiss(ViewController& /*screen*/, bool /*animated*/) {}

  /// Opens a URL with another application. Targets that could reach into this machine (file, javascript,
  /// data, what has no scheme and what is no URL) are refused and told to the console. `completion` hears,
  /// later on the main thread or at once, whether it was opened.
  void openURL(const std::string& url, std::function<void(bool opened)> completion = {});
  /// The page of a store product, as this platform's store spells it.
  virtual std::string storeURL(const std::string& productID) const = 0;

  /// Ends the observation when it goes. May outlive the application.
  class Observation;
  /// Calls `handler` on the main thread for each such event.
  std::shared_ptr<Observation> observe(ApplicationEvent event, std::function<void()> handler);

 protected:
  /// For hosts: tells all observers of the event.
  void post(ApplicationEvent event);
  virtual void performOpenURL(const std::string& url, std::function<void(bool opened)> completion) = 0;
  virtual void refusedURL(const std::string& url) = 0;

 private:
  std::multimap<ApplicationEvent, std::weak_ptr<Observation>> observations_;
};

class Application::Observation {
 public:
  explicit Observation(std::function<void()> handler) : handler_(std::move(handler)) {}

 private:
  friend class Application;
  std::function<void()> handler_;
};

}  // namespace vantorium::ui
