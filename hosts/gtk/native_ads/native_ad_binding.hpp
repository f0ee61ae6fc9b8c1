#pragma once

#include <gtkmm.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/error.hpp>

#include "hosts/gtk/host.hpp"
#include "hosts/gtk/idle_call.hpp"
#include "hosts/gtk/native_ads/outlets.hpp"
#include "native_ads/native_ad_view.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::gtk {

/// Holds a native ad view of the SDK against a widget of the application: the widgets connected to its
/// outlets show what the view says, and the view is in a window while the widget is seen. Main thread only;
/// the widget outlives this object.
class NativeAdBinding final : private ui::Renderer {
 public:
  NativeAdBinding(Gtk::Widget& widget, DesktopHost& host);
  ~NativeAdBinding() override;

  const std::shared_ptr<VantoriumNativeAdView>& view() const { return view_; }
  std::optional<Error> connect(const std::string& outlet, Gtk::Widget& widget);

 private:
  class Shelf;

  void windowNeedsCommit(ui::Window&) override { commit_.schedule(); }
  void commit();
  std::optional<std::string> flawOf(const std::string& outlet, Gtk::Widget& widget) const;
  void watch();
  void updateVisibility();
  void dropOutletsThatAreGone();

  Gtk::Widget& widget_;
  DesktopHost& host_;
  IdleCall commit_{[this] { commit(); }};
  IdleCall look_{[this] { updateVisibility(); }};
  std::shared_ptr<ui::Window> window_;
  std::shared_ptr<ui::View> shelf_;  ///< holds the view while it is not seen
  std::shared_ptr<VantoriumNativeAdView> view_;
  struct Connected {
    std::shared_ptr<ui::View> view;
    std::shared_ptr<Outlet> outlet;
  };
  std::map<std::string, Connected> outlets_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  std::vector<sigc::connection> connections_;
  std::shared_ptr<Ticker::Tick> watching_;
};

}  // namespace vantorium::gtk
