#include "hosts/gtk/style.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

namespace vantorium::gtk {

namespace {

constexpr const char* baseRules = R"(
button.vantorium-button {
  min-width: 0; min-height: 0; padding: 0; margin: 0; border: none; box-shadow: none; text-shadow: none;
  background: none; color: inherit;
}
button.vantorium-button:hover { background: alpha(#808080, 0.25); }
button.vantorium-button:active { background: alpha(#808080, 0.45); }
button.vantorium-button:focus-visible { outline: 3px solid #4a90ff; outline-offset: -3px; }
)";

class Sheet {
 public:
  static Sheet& shared() {
    static Sheet sheet;
    return sheet;
  }

  void need(int radius) {
    if (!radii_.insert(radius).second) return;
    rules_ += fmt::format("button.vantorium-radius-{0} {{ border-radius: {0}px; }}\n", radius);
    provider_->load_from_data(rules_);
  }

 private:
  Sheet() : provider_(Gtk::CssProvider::create()) {
    provider_->load_from_data(rules_);
    if (const auto display = Gdk::Display::get_default()) {
      Gtk::StyleContext::add_provider_for_display(display, provider_,
                                                  GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    }
  }

  std::string rules_ = baseRules;
  std::set<int> radii_;
  Glib::RefPtr<Gtk::CssProvider> provider_;
};

guint16 channel(double value) { return static_cast<guint16>(std::lround(value * 65535)); }

}  // namespace

void applyButtonStyle(Gtk::Button& button, double cornerRadius) {
  const int radius = static_cast<int>(std::lround(cornerRadius));
  Sheet::shared().need(radius);
  button.set_css_classes({"vantorium-button", fmt::format("vantorium-radius-{}", radius)});
}

Pango::AttrList textAttributes(double fontSize, bool bold, ui::Color color) {
  auto size =
      Pango::Attribute::create_attr_size_absolute(static_cast<int>(std::lround(fontSize * PANGO_SCALE)));
  auto weight = Pango::Attribute::create_attr_weight(bold ? Pango::Weight::BOLD : Pango::Weight::NORMAL);
  auto foreground =
      Pango::Attribute::create_attr_foreground(channel(color.red), channel(color.green), channel(color.blue));
  auto opacity = Pango::Attribute::create_attr_foreground_alpha(std::max<guint16>(1, channel(color.alpha)));
  Pango::AttrList attributes;
  for (Pango::Attribute* const each :
       {static_cast<Pango::Attribute*>(&size), static_cast<Pango::Attribute*>(&weight),
        static_cast<Pango::Attribute*>(&foreground), static_cast<Pango::Attribute*>(&opacity)}) {
    attributes.insert(*each);
  }
  return attributes;
}

}  // namespace vantorium::gtk
