#pragma once

#include <nlohmann/json.hpp>

#include "platform/ui/view_controller.hpp"

namespace vantorium::headless {

/// Calls `visit` with the view and everything below it, front-most last.
void forEachView(ui::View& root, const std::function<void(ui::View&)>& visit);

/// A screen's tree as JSON: screen, rotation, frame, views, web, player.
nlohmann::json snapshotOf(ui::ViewController& screen);

}  // namespace vantorium::headless
