#include "hosts/gtk/volume_monitor.hpp"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <utility>

namespace vantorium::gtk {

// Used by PulseAudio's thread, and by others while they hold its lock.
struct VolumeMonitor::Connection {
  std::shared_ptr<FactStore> store;
  pa_threaded_mainloop* loop = nullptr;
  pa_context* context = nullptr;

  static void stateChanged(pa_context* context, void* self);
  static void outputFound(pa_context*, const pa_sink_info* output, int, void* self);
  static void forget(pa_operation* operation) {
    if (operation != nullptr) pa_operation_unref(operation);
  }
  static void ask(pa_context* context, void* self) {
    forget(pa_context_get_sink_info_by_name(context, "@DEFAULT_SINK@", outputFound, self));
  }
};

void VolumeMonitor::Connection::stateChanged(pa_context* context, void* self) {
  if (pa_context_get_state(context) != PA_CONTEXT_READY) return;
  pa_context_set_subscribe_callback(
      context,
      [](pa_context* changed, pa_subscription_event_type_t, std::uint32_t, void* data) {
        ask(changed, data);
      },
      self);
  const auto events =
      static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SERVER);
  forget(pa_context_subscribe(context, events, nullptr, nullptr));
  ask(context, self);
}

void VolumeMonitor::Connection::outputFound(pa_context*, const pa_sink_info* output, int, void* self) {
  if (output == nullptr) return;
  const float loudness =
      static_cast<float>(pa_cvolume_avg(&output->volume)) / static_cast<float>(PA_VOLUME_NORM);
  const float volume = output->mute != 0 ? 0 : std::clamp(loudness, 0.0F, 1.0F);
  static_cast<Connection*>(self)->store->update([&](DeviceFacts& facts) { facts.volume = volume; });
}

VolumeMonitor::VolumeMonitor(std::shared_ptr<FactStore> store) : connection_(std::make_unique<Connection>()) {
  connection_->store = std::move(store);
  connection_->loop = pa_threaded_mainloop_new();
  connection_->context = pa_context_new(pa_threaded_mainloop_get_api(connection_->loop), "Advertising");
  pa_context_set_state_callback(connection_->context, Connection::stateChanged, connection_.get());
  // Without a server nothing follows: the volume keeps its default.
  pa_context_connect(connection_->context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
  pa_threaded_mainloop_start(connection_->loop);
}

VolumeMonitor::~VolumeMonitor() {
  pa_threaded_mainloop_stop(connection_->loop);
  pa_context_disconnect(connection_->context);
  pa_context_unref(connection_->context);
  pa_threaded_mainloop_free(connection_->loop);
}

}  // namespace vantorium::gtk
