#pragma once

#include "platform/ContextMenu.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <functional>
#include <vector>

namespace ondrel::platform::webkit {

ContextHit contextHitFrom(WebKitHitTestResult* hit);

// The rows of the program in a menu of the engine's, instead of the engine's own. Main thread only.
class WebKitMenu {
 public:
  // `view` outlives it.
  explicit WebKitMenu(WebKitWebView* view) : view_(view) {}

  // `choose` gets the rows that the engine doesn't do by itself, until the next menu.
  using Choose = std::function<void(const MenuRow& row)>;

  // False when nothing is left to be shown.
  bool fill(WebKitContextMenu* menu, const ContextMenu& rows, const Choose& choose);

 private:
  glib::Ref<WebKitContextMenuItem> own(const MenuRow& row, const Choose& choose);
  void takeWordAtCaret(const std::vector<glib::Ref<WebKitContextMenuItem>>& items);

  WebKitWebView* view_;
  std::vector<glib::Connection> chosen_; // of the last menu
};

} // namespace ondrel::platform::webkit
