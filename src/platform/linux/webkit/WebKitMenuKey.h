#pragma once

#include "async/Scope.h"
#include "platform/ContextMenu.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <functional>
#include <vector>

namespace ondrel::platform::webkit {

// The context menu by Menu and Shift+F10, for what has the keyboard in the page. The engine shows none for
// them: a text field that it keeps for key bindings takes them and shows its own (2.50). The page hears of
// it first, as with the pointer. Without what only the engine can offer: suggestions for a word, images.
// Main thread only.
class WebKitMenuKey {
 public:
  struct Handlers {
    std::function<ContextMenu(const ContextHit& hit)> rows;
    std::function<void(const MenuRow& row, const ContextHit& hit)> choose; // those that aren't for editing
    std::function<bool()> pasteFiles; // true when the clipboard held some, or a picture
  };

  // `container` holds the view alone. Dies before both.
  WebKitMenuKey(WebKitWebView* view, GtkWidget* container, Handlers handlers);
  WebKitMenuKey(const WebKitMenuKey&) = delete;
  WebKitMenuKey& operator=(const WebKitMenuKey&) = delete;
  ~WebKitMenuKey();

 private:
  async::Task<void> ask();
  void show(const ContextHit& hit, GdkRectangle place);
  void perform(const MenuRow& row, const ContextHit& hit);
  void close();

  WebKitWebView* const view_;
  const glib::Ref<GtkWidget> container_;
  const Handlers handlers_;
  const glib::Ref<GtkEventController> keys_;
  GtkWidget* popover_ = nullptr; // the last one, closed or not
  std::vector<glib::Connection> chosen_;
  async::Scope scope_;
};

} // namespace ondrel::platform::webkit
