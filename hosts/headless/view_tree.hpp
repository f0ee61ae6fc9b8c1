#pragma once

#include <functional>
#include <memory>
#include <string>

#include "hosts/headless/scripted.hpp"
#include "platform/ui/view.hpp"

namespace vantorium::headless {

/// Calls `visit` with the view and everything below it, front-most last.
void forEachView(ui::View& root, const std::function<void(ui::View&)>& visit);

/// The player whose film is shown in the tree; null for none.
std::shared_ptr<ScriptedPlayer> playerIn(ui::View& root);
/// The page shown in the tree; null for none.
std::shared_ptr<ScriptedWebEngine> webEngineIn(ui::View& root);

/// Says that no view of the tree has the outlet, and which have one.
Refusal noControl(ui::View& root, const std::string& outlet);
/// Taps the view of the tree that the outlet names. A hidden one cannot be tapped.
Refusal tapControl(ui::View& root, const std::string& outlet);
/// Taps the view, unless it is hidden; `name` is what the refusal calls it.
Refusal tapView(ui::View& view, const std::string& name);

}  // namespace vantorium::headless
