#include "ui/page/DownloadProgressBar.h"

#include "base/Translation.h"
#include "ui/widgets/Widgets.h"
#include "web/page/DownloadItem.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

constexpr int greatestHeight = 168; // pixels; the page must stay in sight

} // namespace

DownloadProgressBar::DownloadProgressBar(platform::UriLauncher& launcher)
    : launcher_(launcher), bar_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))),
      list_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)),
      pointer_(GTK_EVENT_CONTROLLER_MOTION(gtk_event_controller_motion_new())),
      keyboard_(GTK_EVENT_CONTROLLER_FOCUS(gtk_event_controller_focus_new())) {
  gtk_widget_set_name(bar_.get(), "downloads");
  gtk_widget_add_css_class(bar_.get(), "downloads");
  gtk_widget_set_visible(bar_.get(), FALSE);
  setAccessibleLabel(list_, base::tr("Downloads"));
  auto* scrolled = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scrolled), TRUE);
  gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scrolled), greatestHeight);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), list_);
  gtk_box_append(GTK_BOX(bar_.get()), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
  gtk_box_append(GTK_BOX(bar_.get()), scrolled);
  gtk_widget_add_controller(bar_.get(), GTK_EVENT_CONTROLLER(pointer_));
  gtk_widget_add_controller(bar_.get(), GTK_EVENT_CONTROLLER(keyboard_));
  key_ = addKey();
  const auto tell = [this](GObject*, GParamSpec*) { tellWhetherHeld(); };
  connections_.push_back(
      glib::connect<void(GObject*, GParamSpec*)>(pointer_, "notify::contains-pointer", tell));
  connections_.push_back(
      glib::connect<void(GObject*, GParamSpec*)>(keyboard_, "notify::contains-focus", tell));
  // As when its window is no longer the active one.
  connections_.push_back(glib::connect<void(GtkWidget*, GtkStateFlags)>(
      bar_.get(), "state-flags-changed", [this](GtkWidget*, GtkStateFlags) { tellWhetherHeld(); }));
}

DownloadProgressBar::~DownloadProgressBar() {
  gtk_widget_remove_controller(bar_.get(), key_);
  for (const auto& row : rows_)
    row->item()->isHeld.set(false);
}

GtkEventController* DownloadProgressBar::addKey() {
  auto* controller = gtk_shortcut_controller_new();
  gtk_shortcut_controller_set_scope(GTK_SHORTCUT_CONTROLLER(controller), GTK_SHORTCUT_SCOPE_GLOBAL);
  // Before the page sees it.
  gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
  const GtkShortcutFunc act = [](GtkWidget*, GVariant*, gpointer self) -> gboolean {
    return static_cast<DownloadProgressBar*>(self)->moveKeyboard();
  };
  gtk_shortcut_controller_add_shortcut(
      GTK_SHORTCUT_CONTROLLER(controller),
      gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_F6, GdkModifierType(0)),
                       gtk_callback_action_new(act, this, nullptr)));
  gtk_widget_add_controller(bar_.get(), controller);
  return controller;
}

bool DownloadProgressBar::moveKeyboard() {
  if (!gtk_widget_get_mapped(bar_.get()))
    return false;
  auto* root = gtk_widget_get_root(bar_.get());
  if (!gtk_event_controller_focus_contains_focus(keyboard_)) {
    formerFocus_.set(gtk_root_get_focus(root));
    gtk_window_set_focus_visible(GTK_WINDOW(root), TRUE);
    return giveFocus(list_);
  }
  leave();
  return true;
}

void DownloadProgressBar::leave() {
  if (const auto former = formerFocus_.lock())
    gtk_widget_grab_focus(former.get());
}

// The toolkit isn't told that the pointer has gone when another window comes up under it.
bool DownloadProgressBar::hasPointer() const {
  auto* root = gtk_widget_get_root(bar_.get());
  if (!root || !gtk_event_controller_motion_contains_pointer(pointer_))
    return false;
  auto* seat = gdk_display_get_default_seat(gtk_widget_get_display(bar_.get()));
  return seat && gdk_device_get_surface_at_position(gdk_seat_get_pointer(seat), nullptr, nullptr) ==
                     gtk_native_get_surface(GTK_NATIVE(root));
}

void DownloadProgressBar::tellWhetherHeld() {
  const bool isHeld = hasPointer() || gtk_event_controller_focus_contains_focus(keyboard_);
  for (const auto& row : rows_)
    row->item()->isHeld.set(isHeld);
}

void DownloadProgressBar::setDownloads(const std::vector<std::shared_ptr<web::DownloadItem>>& downloads) {
  std::vector<std::unique_ptr<DownloadRow>> gone;
  std::erase_if(rows_, [&](auto& row) {
    if (std::ranges::find(downloads, row->item()) != downloads.end())
      return false;
    gone.push_back(std::move(row));
    return true;
  });
  // The pointer or the keyboard may leave with them, which is told at once.
  for (const auto& row : gone) {
    row->item()->isHeld.set(false);
    gtk_box_remove(GTK_BOX(list_), row->widget());
  }
  for (const auto& item : downloads) {
    if (std::ranges::find(rows_, item, &DownloadRow::item) != rows_.end())
      continue;
    rows_.push_back(std::make_unique<DownloadRow>(item, launcher_, [this] { leave(); }));
    gtk_box_append(GTK_BOX(list_), rows_.back()->widget());
  }
  gtk_widget_set_visible(bar_.get(), !rows_.empty());
  tellWhetherHeld();
}

} // namespace ondrel::ui
