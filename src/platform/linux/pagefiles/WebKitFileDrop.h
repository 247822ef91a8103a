#pragma once

#include "async/Scope.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "platform/linux/pagefiles/WebKitFileHandover.h"

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform::pagefiles {

// Takes drags of files that come over a web view. While one is there, the engine's widget is no target, so
// that the container around it is; other drags reach the engine as ever. The page hears of the files as they
// move, and the pointer shows whether it would take them.
class WebKitFileDrop {
 public:
  using Files = std::vector<glib::Ref<GFile>>;
  using Handler = std::function<void(Files, ViewPoint)>;

  // `handover` is borrowed. `dropped` is called with the files of a drop.
  WebKitFileDrop(GtkWidget* view, GtkWidget* container, WebKitFileHandover& handover, Handler dropped);
  ~WebKitFileDrop();
  WebKitFileDrop(const WebKitFileDrop&) = delete;
  WebKitFileDrop& operator=(const WebKitFileDrop&) = delete;

 private:
  gboolean entered(GdkDrop* drop);
  GdkDragAction moved(GdkDrop* drop, ViewPoint place);
  void left();
  gboolean dropped(GdkDrop* drop, ViewPoint place);
  void release();
  async::Task<void> follow(glib::Ref<GdkDrop> drop);
  async::Task<void> take(glib::Ref<GdkDrop> drop, ViewPoint place);
  GdkDragAction action() const { return pageAccepts_ ? GDK_ACTION_COPY : GdkDragAction(0); }

  GtkWidget* view_;
  glib::Ref<GtkWidget> container_;
  WebKitFileHandover& handover_;
  Handler handler_;
  glib::Ref<GtkEventController> target_;
  glib::Ref<GtkEventController> pointer_;
  GdkDrop* over_ = nullptr;          // the drag of files that is there; may have gone
  std::optional<ViewPoint> waiting_; // where the page has not heard of it yet
  bool pageAccepts_ = true;          // until it says otherwise
  std::vector<glib::Connection> connections_;
  async::TaskHandle following_;
  async::Scope scope_;
};

} // namespace ondrel::platform::pagefiles
