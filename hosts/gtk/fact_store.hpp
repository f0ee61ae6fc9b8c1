#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/foundation/device_information.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium::gtk {

/// What is known of the device at this moment, gathered by several observers. Any thread.
class FactStore {
 public:
  explicit FactStore(DeviceFacts facts) : facts_(std::move(facts)) {}

  DeviceFacts facts() const {
    MutexLock lock(mutex_);
    return facts_;
  }
  /// `change` must not call out.
  template <typename Change>
  void update(Change change) {
    MutexLock lock(mutex_);
    change(facts_);
  }

  /// Whether a service tells of the battery, so that nobody else needs to look.
  bool isBatteryTold() const { return isBatteryTold_; }
  void setBatteryTold(bool told) { isBatteryTold_ = told; }

  std::optional<std::string> radioTechnology() const {
    MutexLock lock(mutex_);
    return radioTechnology_;
  }
  void setRadioTechnology(std::optional<std::string> technology) {
    MutexLock lock(mutex_);
    radioTechnology_ = std::move(technology);
  }

 private:
  mutable Mutex mutex_;
  DeviceFacts facts_ GUARDED_BY(mutex_);
  std::optional<std::string> radioTechnology_ GUARDED_BY(mutex_);
  std::atomic<bool> isBatteryTold_ = false;
};

}  // namespace vantorium::gtk
