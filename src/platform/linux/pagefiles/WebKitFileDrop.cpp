#include "platform/linux/pagefiles/WebKitFileDrop.h"

#include "platform/linux/pagefiles/FileList.h"

namespace ondrel::platform::pagefiles {

WebKitFileDrop::WebKitFileDrop(GtkWidget* view, GtkWidget* container, WebKitFileHandover& handover,
                               Handler dropped)
    : view_(view), container_(glib::share(container)), handover_(handover), handler_(std::move(dropped)),
      target_(glib::adopt(GTK_EVENT_CONTROLLER(gtk_drop_target_async_new(
          gdk_content_formats_new_for_gtype(GDK_TYPE_FILE_LIST), GDK_ACTION_COPY)))),
      pointer_(glib::adopt(gtk_event_controller_motion_new())) {
  using Target = GtkDropTargetAsync;
  auto* target = target_.get();
  connections_.push_back(glib::connect<gboolean(Target*, GdkDrop*)>(
      target, "accept", [this](Target*, GdkDrop* drop) { return entered(drop); }));
  for (const auto* signal : {"drag-enter", "drag-motion"})
    connections_.push_back(glib::connect<GdkDragAction(Target*, GdkDrop*, double, double)>(
        target, signal, [this](Target*, GdkDrop* drop, double x, double y) { return moved(drop, {x, y}); }));
  connections_.push_back(
      glib::connect<void(Target*, GdkDrop*)>(target, "drag-leave", [this](Target*, GdkDrop*) { left(); }));
  connections_.push_back(glib::connect<gboolean(Target*, GdkDrop*, double, double)>(
      target, "drop",
      [this](Target*, GdkDrop* drop, double x, double y) { return this->dropped(drop, {x, y}); }));
  gtk_widget_add_controller(container, GTK_EVENT_CONTROLLER(g_object_ref(target)));
  // A program that ends in the middle of its drag says no goodbye. No pointer moves here while one goes on.
  connections_.push_back(glib::connect<void(GtkEventControllerMotion*, double, double)>(
      pointer_.get(), "motion", [this](GtkEventControllerMotion*, double, double) { left(); }));
  gtk_widget_add_controller(container, GTK_EVENT_CONTROLLER(g_object_ref(pointer_.get())));
}

WebKitFileDrop::~WebKitFileDrop() {
  connections_.clear();
  release();
  gtk_widget_remove_controller(container_.get(), target_.get());
  gtk_widget_remove_controller(container_.get(), pointer_.get());
}

// Comes before the engine's widget hears of the drag.
gboolean WebKitFileDrop::entered(GdkDrop* drop) {
  if (!offersFiles(gdk_drop_get_formats(drop)))
    return FALSE;
  over_ = drop;
  pageAccepts_ = true;
  gtk_widget_set_can_target(view_, FALSE);
  return TRUE;
}

GdkDragAction WebKitFileDrop::moved(GdkDrop* drop, ViewPoint place) {
  if (over_ != drop)
    return GdkDragAction(0);
  waiting_ = place;
  if (following_.done())
    following_ = scope_.spawn(follow(glib::share(drop)));
  return action();
}

// One question to the page at a time, whatever the pointer does meanwhile.
async::Task<void> WebKitFileDrop::follow(glib::Ref<GdkDrop> drop) {
  while (over_ == drop.get() && waiting_) {
    const auto place = *std::exchange(waiting_, std::nullopt);
    // How many there are, and of which types, is known only when they are dropped.
    const auto accepted = co_await handover_.over(place, {std::string()});
    if (over_ != drop.get())
      break;
    pageAccepts_ = accepted.value_or(pageAccepts_);
    gdk_drop_status(drop.get(), action(), action());
  }
}

void WebKitFileDrop::release() {
  over_ = nullptr;
  waiting_.reset();
  gtk_widget_set_can_target(view_, TRUE);
}

void WebKitFileDrop::left() {
  if (!over_)
    return;
  release();
  scope_.spawn(handover_.leave());
}

gboolean WebKitFileDrop::dropped(GdkDrop* drop, ViewPoint place) {
  if (over_ != drop)
    return FALSE;
  release();
  scope_.spawn(take(glib::share(drop), place));
  return TRUE;
}

async::Task<void> WebKitFileDrop::take(glib::Ref<GdkDrop> drop, ViewPoint place) {
  auto files = co_await readFiles(drop);
  gdk_drop_finish(drop.get(), files.empty() ? GdkDragAction(0) : GDK_ACTION_COPY);
  handler_(std::move(files), place);
}

} // namespace ondrel::platform::pagefiles
