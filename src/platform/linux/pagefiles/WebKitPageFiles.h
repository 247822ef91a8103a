#pragma once

#include "async/Scope.h"
#include "platform/linux/pagefiles/FileInspection.h"
#include "platform/linux/pagefiles/WebKitFileDrop.h"
#include "platform/linux/pagefiles/WebKitFileHandover.h"
#include "platform/linux/pagefiles/WebKitFilePaste.h"

#include <webkit/webkit.h>

#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform::pagefiles {

// Takes files that the user drops on a web view or pastes into it, before the engine sees them, and hands
// them to its page. What is no file goes its usual way through the engine. One for each web view of the
// user's; dies before the engine's view does.
class WebKitPageFiles {
 public:
  // `container` holds the view alone. `tell` gets one line for the user when files did not get to the page.
  WebKitPageFiles(WebKitWebView* view, GtkWidget* container, std::function<void(const std::string&)> tell);
  WebKitPageFiles(const WebKitPageFiles&) = delete;
  WebKitPageFiles& operator=(const WebKitPageFiles&) = delete;

  using Files = std::vector<glib::Ref<GFile>>;
  void drop(Files files, ViewPoint place);
  void paste(Files files);
  void paste(PagePicture picture);

  bool answers(WebKitFileChooserRequest* request) { return handover_.answers(request); }
  void willShowMenu(WebKitContextMenu* menu) { paste_.takeMenuItem(menu); }
  // False when the clipboard holds neither files nor a picture alone.
  bool pasteFromClipboard() { return paste_.start(); }

 private:
  using Result = std::optional<WebKitFileHandover::Answer>;
  async::Task<void> handDropped(Files files, ViewPoint place);
  async::Task<void> handPasted(Files files);
  async::Task<void> handPicture(PagePicture picture);
  void report(FileInspection inspection, const Result& result);

  std::function<void(const std::string&)> tell_;
  WebKitFileHandover handover_;
  WebKitFileDrop drop_;
  WebKitFilePaste paste_;
  async::Scope scope_;
};

} // namespace ondrel::platform::pagefiles
