#include "hosts/headless/snapshot.hpp"

#include "hosts/headless/scripted.hpp"
#include "hosts/headless/view_tree.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium::headless {

using nlohmann::json;

namespace {

json rectJSON(ui::Rect rect) { return {rect.x, rect.y, rect.width, rect.height}; }

/// The text and ring of a view made of smaller ones, such as a countdown.
void describeParts(ui::View& view, json& description) {
  forEachView(view, [&](ui::View& part) {
    if (auto* const label = dynamic_cast<ui::Label*>(&part)) description["text"] = label->text();
    for (const auto& layer : part.sublayers()) {
      if (auto* const shape = dynamic_cast<ui::ShapeLayer*>(layer.get())) {
        description["progress"] = shape->strokeStart();
      }
    }
  });
}

json viewJSON(ui::View& view) {
  json description{{"outlet", view.outlet().empty() ? json(nullptr) : json(view.outlet())},
                   {"class", view.className()},
                   {"frame", rectJSON(view.frame())},
                   {"hidden", view.isHidden()}};
  if (auto* const button = dynamic_cast<ui::Button*>(&view)) {
    if (!button->title().empty()) description["text"] = button->title();
    if (!button->image().empty()) description["image"] = button->image();
    description["selected"] = button->isSelected();
    description["highlighted"] = button->isHighlighted();
  } else if (auto* const image = dynamic_cast<ui::ImageView*>(&view)) {
    description["image"] = image->image() ? image->image()->name() : "";
    description["highlighted"] = image->isHighlighted();
  } else if (view.className() == std::string("TimerView") || dynamic_cast<ui::Label*>(&view) != nullptr) {
    describeParts(view, description);
  }
  return description;
}

json playerJSON(const ui::PlayerLayer& layer) {
  const auto player = std::dynamic_pointer_cast<ScriptedPlayer>(layer.player());
  if (!player) return nullptr;
  const bool fills = layer.videoGravity() == ui::VideoGravity::resizeAspectFill;
  return {{"source", player->source()},
          {"position", player->currentTime()},
          {"playing", player->isPlaying()},
          {"muted", player->isMuted()},
          {"gravity", fills ? "resizeAspectFill" : "resizeAspect"}};
}

}  // namespace

json snapshotOf(ui::ViewController& screen) {
  json result = snapshotOf(screen.view());
  result["screen"] = screen.className();
  return result;
}

json snapshotOf(ui::View& view) {
  json result{{"screen", view.className()},
              {"rotation", view.transform().angle()},
              {"frame", rectJSON(view.frame())},
              {"views", json::array()},
              {"web", nullptr},
              {"player", nullptr}};
  forEachView(view, [&](ui::View& each) {
    result["views"].push_back(viewJSON(each));
    if (auto* const engine = dynamic_cast<ScriptedWebEngine*>(&each)) result["web"] = engine->lastLoad();
    for (const auto& layer : each.sublayers()) {
      if (auto* const player = dynamic_cast<ui::PlayerLayer*>(layer.get()))
        result["player"] = playerJSON(*player);
    }
  });
  return result;
}

}  // namespace vantorium::headless
