#include "platform/ui/interface_file.hpp"

#include <fmt/format.h>

#include <cassert>
#include <new>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "platform/foundation/console.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium::ui {

namespace {

using nlohmann::json;

Color parseColor(const std::string& text) {
  // "#rrggbb" or "#rrggbbaa"
  const auto channel = [&](std::size_t index) {
    return static_cast<double>(std::stoul(text.substr(1 + 2 * index, 2), nullptr, 16)) / 255;
  };
  if (text.size() != 7 && text.size() != 9) throw std::invalid_argument("not a colour: " + text);
  return {channel(0), channel(1), channel(2), text.size() == 9 ? channel(3) : 1};
}

LayoutAttribute parseAttribute(const std::string& name) {
  static const std::map<std::string, LayoutAttribute> names{
      {"left", LayoutAttribute::left},       {"right", LayoutAttribute::right},
      {"top", LayoutAttribute::top},         {"bottom", LayoutAttribute::bottom},
      {"leading", LayoutAttribute::leading}, {"trailing", LayoutAttribute::trailing},
      {"width", LayoutAttribute::width},     {"height", LayoutAttribute::height},
      {"centerX", LayoutAttribute::centerX}, {"centerY", LayoutAttribute::centerY}};
  return names.at(name);
}

/// Builds the views of one file.
class Loader {
 public:
  explicit Loader(const InterfaceConnections& connections) : connections_(connections) {}

  std::shared_ptr<View> build(const json& description) {
    std::shared_ptr<View> view = make(description.value("class", "View"));
    applyAppearance(*view, description);
    if (auto* const label = dynamic_cast<Label*>(view.get())) applyText(*label, description);
    if (auto* const button = dynamic_cast<Button*>(view.get())) applyButton(*button, description);
    if (auto* const image = dynamic_cast<ImageView*>(view.get()))
      image->setImage(Image::named(description.value("image", "")));
    connect(view, description);
    for (const json& child : description.value("subviews", json::array())) {
      const std::shared_ptr<View> subview = build(child);
      view->addSubview(subview);
      constrain(view, subview, child.value("constraints", json::object()));
    }
    return view;
  }

  void checkComplete() const {
    for (const auto& [name, handler] : connections_.outlets) {
      if (!filled_.contains(name)) throw std::out_of_range("no view for the outlet " + name);
    }
  }

 private:
  std::shared_ptr<View> make(const std::string& className) const {
    if (className == "View") return std::make_shared<View>();
    if (className == "Label") return std::make_shared<Label>();
    if (className == "Button") return std::make_shared<Button>();
    if (className == "ImageView") return std::make_shared<ImageView>();
    return connections_.classes.at(className)();
  }

  static void applyAppearance(View& view, const json& description) {
    view.setHidden(description.value("hidden", false));
    view.setAlpha(description.value("alpha", 1.0));
    view.setCornerRadius(description.value("cornerRadius", 0.0));
    view.setClipsToBounds(description.value("clipsToBounds", false));
    view.setAccessibilityLabel(description.value("accessibilityLabel", ""));
    if (description.contains("background")) view.setBackgroundColor(parseColor(description["background"]));
  }

  static void applyText(Label& label, const json& description) {
    label.setText(description.value("text", ""));
    label.setFontSize(description.value("fontSize", label.fontSize()));
    label.setBold(description.value("bold", false));
    label.setNumberOfLines(description.value("numberOfLines", 1));
    if (description.contains("textColor")) label.setTextColor(parseColor(description["textColor"]));
    if (description.value("alignment", "left") == "center") label.setAlignment(TextAlignment::center);
  }

  void applyButton(Button& button, const json& description) const {
    button.setTitle(description.value("title", ""));
    button.setFontSize(description.value("fontSize", button.fontSize()));
    button.setImage(description.value("image", ""), description.value("selectedImage", ""));
    if (description.contains("titleColor")) button.setTitleColor(parseColor(description["titleColor"]));
    if (description.contains("action")) button.setAction(connections_.actions.at(description["action"]));
  }

  void connect(const std::shared_ptr<View>& view, const json& description) {
    if (!description.contains("outlet")) return;
    const std::string name = description["outlet"];
    view->setOutlet(name);
    named_[name] = view;
    connections_.outlets.at(name)(view);
    filled_.insert(name);
  }

  /// Each entry names an attribute and either a constant (edges and centres then follow the superview's) or
  /// {"to": outlet or "superview", "attribute", "multiplier", "constant"}.
  void constrain(const std::shared_ptr<View>& superview, const std::shared_ptr<View>& view,
                 const json& constraints) const {
    for (const auto& [name, rule] : constraints.items()) {
      LayoutConstraint constraint;
      constraint.first = view;
      constraint.firstAttribute = parseAttribute(name);
      constraint.secondAttribute = constraint.firstAttribute;
      if (rule.is_object()) {
        const std::string other = rule.value("to", "superview");
        constraint.second = other == "superview" ? superview : named_.at(other);
        constraint.secondAttribute = parseAttribute(rule.value("attribute", name));
        constraint.multiplier = rule.value("multiplier", 1.0);
        constraint.constant = rule.value("constant", 0.0);
      } else {
        constraint.constant = rule;
        if (name != "width" && name != "height") constraint.second = superview;
      }
      superview->addConstraint(constraint);
    }
  }

  const InterfaceConnections& connections_;
  std::map<std::string, std::shared_ptr<View>> named_;
  std::set<std::string> filled_;
};

}  // namespace

std::shared_ptr<View> loadInterface(const std::string& name, const InterfaceConnections& connections) {
  try {
    Loader loader(connections);
    auto view = loader.build(json::parse(bundleResource(name + ".json")));
    loader.checkComplete();
    return view;
  } catch (const std::bad_alloc&) {
    throw;  // the file is well
  } catch (const std::exception& problem) {
    printToConsole(fmt::format("The interface file {}.json is broken: {}", name, problem.what()));
    assert(false && "broken interface file");
    return std::make_shared<View>();
  }
}

}  // namespace vantorium::ui
