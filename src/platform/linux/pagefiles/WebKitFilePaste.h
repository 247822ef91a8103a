#pragma once

#include "async/Scope.h"
#include "platform/PageFiles.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform::pagefiles {

// Takes the user's own "paste" in a web view, by key or by menu, when the clipboard holds files, or a picture
// and no text. Any other paste stays with the engine.
class WebKitFilePaste {
 public:
  struct Handlers {
    std::function<void(std::vector<glib::Ref<GFile>>)> files;
    std::function<void(PagePicture)> picture;
    std::function<void(const std::string&)> failed; // with one line for the user
  };

  WebKitFilePaste(WebKitWebView* view, GtkWidget* container, Handlers handlers);
  ~WebKitFilePaste();
  WebKitFilePaste(const WebKitFilePaste&) = delete;
  WebKitFilePaste& operator=(const WebKitFilePaste&) = delete;

  // Puts an item of ours into the place of the engine's own, if the clipboard is for us.
  void takeMenuItem(WebKitContextMenu* menu);
  // Pastes if the clipboard is for us; false otherwise.
  bool start();

 private:
  async::Task<void> pasteFiles();
  async::Task<void> pastePicture(std::string type);

  WebKitWebView* view_;
  glib::Ref<GtkWidget> container_;
  Handlers handlers_;
  glib::Ref<GtkEventController> keys_;
  glib::Ref<GSimpleAction> menuAction_;
  glib::Connection menuActivated_;
  async::Scope scope_;
};

} // namespace ondrel::platform::pagefiles
