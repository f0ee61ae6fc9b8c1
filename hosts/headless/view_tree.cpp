#include "hosts/headless/view_tree.hpp"

#include <fmt/format.h>

#include <set>

#include "hosts/headless/wording.hpp"
#include "platform/ui/layer.hpp"

namespace vantorium::headless {

namespace {

bool isVisible(const ui::View& view) {
  for (const ui::View* each = &view; each != nullptr; each = each->superview()) {
    if (each->isHidden()) return false;
  }
  return true;
}

}  // namespace

void forEachView(ui::View& root, const std::function<void(ui::View&)>& visit) {
  visit(root);
  for (const auto& subview : root.subviews()) forEachView(*subview, visit);
}

std::shared_ptr<ScriptedPlayer> playerIn(ui::View& root) {
  std::shared_ptr<ScriptedPlayer> found;
  forEachView(root, [&](ui::View& view) {
    for (const auto& layer : view.sublayers()) {
      const auto* const playerLayer = dynamic_cast<ui::PlayerLayer*>(layer.get());
      if (playerLayer != nullptr) found = std::dynamic_pointer_cast<ScriptedPlayer>(playerLayer->player());
    }
  });
  return found;
}

std::shared_ptr<ScriptedWebEngine> webEngineIn(ui::View& root) {
  std::shared_ptr<ScriptedWebEngine> found;
  forEachView(root, [&](ui::View& view) {
    if (auto engine = std::dynamic_pointer_cast<ScriptedWebEngine>(view.shared_from_this())) found = engine;
  });
  return found;
}

Refusal noControl(ui::View& root, const std::string& outlet) {
  std::set<std::string> all;
  forEachView(root, [&](ui::View& view) {
    if (!view.outlet().empty()) all.insert(view.outlet());
  });
  const std::string expected =
      all.empty() ? "a view with outlets" : "one of " + listed({all.begin(), all.end()});
  return fmt::format("There is no control \"{}\". Expected {}.", outlet, expected);
}

Refusal tapControl(ui::View& root, const std::string& outlet) {
  std::shared_ptr<ui::View> target;
  forEachView(root, [&](ui::View& view) {
    if (view.outlet() == outlet) target = view.shared_from_this();
  });
  if (!target) return noControl(root, outlet);
  return tapView(*target, outlet);
}

Refusal tapView(ui::View& view, const std::string& name) {
  if (!isVisible(view)) return fmt::format("The control \"{}\" is hidden. Expected one that is seen.", name);
  const auto self = view.shared_from_this();  // the tap may release the view's owner
  self->handleTap();
  return std::nullopt;
}

}  // namespace vantorium::headless
