#include "hosts/gtk/stage.hpp"

#include <algorithm>
#include <utility>

#include "platform/ui/application.hpp"

namespace vantorium::gtk {

namespace {

constexpr guint backMouseButton = 8;

}  // namespace

Stage::Stage(Gtk::Window& window, ui::Application& application, std::shared_ptr<ImageLoader> images,
             Events events)
    : window_(window), events_(std::move(events)), root_(std::make_shared<ui::ViewController>(application)) {
  g_weak_ref_init(&previousFocus_, nullptr);
  tree_ = std::make_shared<ui::Window>(static_cast<ui::Renderer&>(*this), ui::Rect{});
  mirror_ = std::make_unique<ViewNode>(*tree_, std::move(images));
  overlay_.add_overlay(surface_);
  surface_.onResize = [this] {
    resize_.schedule();
  };  // layout is under way: the tree may change only after it
  surface_.onBackSwipe = [this] { goBack(); };
  wrapContent();
  watchWindow();
  watchBackKeys();
  tree_->setFrame(bounds());
  root_->view().setFrame(tree_->bounds());
  tree_->addSubview(root_->view().shared_from_this());
}

Stage::~Stage() {
  if (!windowIsGone_) letGoOfWindow();
  g_weak_ref_clear(&previousFocus_);
}

// Done before the application realises its content, and again whenever it sets another.
void Stage::wrapContent() {
  Gtk::Widget* const content = window_.get_child();
  if (content == &overlay_) return;
  if (content != nullptr) {
    g_object_ref(content->gobj());
    window_.unset_child();
    overlay_.set_child(*content);
    g_object_unref(content->gobj());
    if (isCovered_) {
      contentCouldFocus_ = content->get_can_focus();
      content->set_can_focus(false);
    }
  }
  window_.set_child(overlay_);
}

void Stage::watchWindow() {
  const auto changed = [this] { events_.foregroundDidChange(); };
  connections_.push_back(window_.property_child().signal_changed().connect([this] { wrapContent(); }));
  connections_.push_back(window_.signal_map().connect(changed));
  connections_.push_back(window_.signal_unmap().connect(changed));
  connections_.push_back(window_.signal_realize().connect([this] { watchSurface(); }));
  if (window_.get_realized()) watchSurface();
  g_signal_connect(window_.gobj(), "destroy", G_CALLBACK(&Stage::windowDestroyed), this);
}

void Stage::watchSurface() {
  const auto surface = std::dynamic_pointer_cast<Gdk::Toplevel>(window_.get_surface());
  if (!surface) return;
  connections_.push_back(
      surface->property_state().signal_changed().connect([this] { events_.foregroundDidChange(); }));
}

// The C++ window is being taken apart: it is not to be touched any more.
void Stage::windowDestroyed(GtkWindow*, Stage* self) {
  self->windowIsGone_ = true;
  // A copy: the handler destroys this stage.
  const auto closed = self->events_.closed;
  closed(*self);
}

void Stage::letGoOfWindow() {
  g_signal_handlers_disconnect_by_data(window_.gobj(), this);
  for (auto& connection : connections_) connection.disconnect();
  for (const auto& controller : controllers_) window_.remove_controller(controller);
  setCovered(false);
  Gtk::Widget* const content = overlay_.get_child();
  if (content != nullptr) g_object_ref(content->gobj());
  overlay_.unset_child();
  window_.unset_child();
  if (content == nullptr) return;
  window_.set_child(*content);
  g_object_unref(content->gobj());
}

void Stage::addController(const Glib::RefPtr<Gtk::EventController>& controller) {
  controllers_.push_back(controller);
  window_.add_controller(controller);
}

void Stage::watchBackKeys() {
  const auto keys = Gtk::EventControllerKey::create();
  keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
  keys->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) {
        return (key == GDK_KEY_Escape || key == GDK_KEY_Back) && goBack();
      },
      false);
  addController(keys);

  const auto button = Gtk::GestureClick::create();
  button->set_button(backMouseButton);
  button->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
  button->signal_pressed().connect([this, gesture = button.get()](int, double, double) {
    if (goBack()) gesture->set_state(Gtk::EventSequenceState::CLAIMED);
  });
  addController(button);
}

// Whether an ad was there to hear of it: the application below must not.
bool Stage::goBack() {
  if (!hasAd()) return false;
  std::shared_ptr<ui::ViewController> screen = root_;
  while (screen->presentedViewController()) screen = screen->presentedViewController();
  screen->handleBack();
  return true;
}

bool Stage::isVisible() const { return window_.get_visible(); }
bool Stage::isMonitorWide() const {
  const auto surface = window_.get_surface();
  const auto monitor =
      surface ? window_.get_display()->get_monitor_at_surface(surface) : Glib::RefPtr<Gdk::Monitor>();
  if (!monitor) return false;
  Gdk::Rectangle area;
  monitor->get_geometry(area);
  return area.get_width() > area.get_height();
}

bool Stage::isActive() const { return isVisible() && window_.is_active(); }

bool isInForeground(GdkSurface* surface) {
  if (surface == nullptr || !gdk_surface_get_mapped(surface)) return false;
  if (!GDK_IS_TOPLEVEL(surface)) return true;
  int hiding = GDK_TOPLEVEL_STATE_MINIMIZED;
#if GTK_CHECK_VERSION(4, 12, 0)
  hiding |= GDK_TOPLEVEL_STATE_SUSPENDED;
#endif
  return (gdk_toplevel_get_state(GDK_TOPLEVEL(surface)) & hiding) == 0;
}

bool Stage::isInForeground() const {
  return window_.get_mapped() && gtk::isInForeground(gtk_native_get_surface(GTK_NATIVE(window_.gobj())));
}

ui::Rect Stage::bounds() const {
  int width = surface_.get_width(), height = surface_.get_height();
  if (width == 0 || height == 0) window_.get_default_size(width, height);
  return {0, 0, static_cast<double>(std::max(0, width)), static_cast<double>(std::max(0, height))};
}

void Stage::resize() {
  const ui::Size size = bounds().size();
  if (size != tree_->bounds().size()) tree_->resize(size, *root_);
}

void Stage::windowNeedsCommit(ui::Window&) { commit_.schedule(); }

void Stage::commit() {
  tree_->layoutIfNeeded();
  mirror_->sync();
  mirror_->reachFrontmostOnly();
  surface_.place(mirror_->widget(), Placement::filling(tree_->bounds().size()));
  tree_->didCommit();
  setCovered(hasAd());
  if (isCovered_) focusAd();
}

void Stage::setCovered(bool covered) {
  if (covered == isCovered_) return;
  isCovered_ = covered;
  surface_.setOpen(covered);
  Gtk::Widget* const content = overlay_.get_child();
  if (covered) {
    GtkWidget* const focus = gtk_root_get_focus(GTK_ROOT(window_.gobj()));
    g_weak_ref_set(&previousFocus_, focus);
    if (content != nullptr) contentCouldFocus_ = content->get_can_focus();
    if (content != nullptr) content->set_can_focus(false);
  } else {
    if (content != nullptr) content->set_can_focus(contentCouldFocus_);
    returnFocus();
  }
}

// Leaves the focus where the user put it as long as it can stay there. The window may still name a widget
// that is gone from it, and from C++.
void Stage::focusAd() {
  GtkWidget* const focus = gtk_window_get_focus(window_.gobj());
  auto* const surface = GTK_WIDGET(surface_.gobj());
  bool canStay = focus != nullptr && gtk_widget_get_mapped(focus) && gtk_widget_is_ancestor(focus, surface);
  for (GtkWidget* each = focus; canStay && each != surface; each = gtk_widget_get_parent(each)) {
    canStay = gtk_widget_get_can_focus(each);
  }
  if (canStay) return;
  if (Gtk::Widget* const next = mirror_->preferredFocus()) {
    next->grab_focus();
  } else {
    window_.unset_focus();
  }
}

void Stage::returnFocus() {
  auto* const focus = static_cast<GtkWidget*>(g_weak_ref_get(&previousFocus_));
  g_weak_ref_set(&previousFocus_, nullptr);
  if (focus == nullptr) return;
  if (gtk_widget_is_ancestor(focus, GTK_WIDGET(window_.gobj()))) gtk_widget_grab_focus(focus);
  g_object_unref(focus);
}

}  // namespace vantorium::gtk
