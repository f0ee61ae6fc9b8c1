#pragma once

#include <nlohmann/json.hpp>

#include "platform/ui/view_controller.hpp"

namespace vantorium::headless {

/// A screen's tree as JSON: screen, rotation, frame, views, web, player.
nlohmann::json snapshotOf(ui::ViewController& screen);
/// Likewise of a view of the application's own; its class stands for the screen.
nlohmann::json snapshotOf(ui::View& view);

}  // namespace vantorium::headless
