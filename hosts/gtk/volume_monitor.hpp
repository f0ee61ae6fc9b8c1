#pragma once

#include <memory>

#include "hosts/gtk/fact_store.hpp"

namespace vantorium::gtk {

/// Keeps the store's volume that of PulseAudio's (or PipeWire's) default output, while such a server runs.
/// Its thread sleeps unless the volume changes. Main thread only.
class VolumeMonitor {
 public:
  explicit VolumeMonitor(std::shared_ptr<FactStore> store);
  ~VolumeMonitor();
  VolumeMonitor(const VolumeMonitor&) = delete;
  VolumeMonitor& operator=(const VolumeMonitor&) = delete;

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace vantorium::gtk
