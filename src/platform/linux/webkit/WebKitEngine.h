#pragma once

#include "base/Event.h"
#include "platform/UserScript.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::platform::webkit {

struct WebKitOptions {
  std::string dataFolder;      // cookies and what pages store; made if missing, for the user alone
  std::string cacheFolder;     // may be emptied at any time
  std::string extensionFolder; // of the extension's library, which must be there
  std::vector<std::string> handlerNames = {
      "ondrel"};                   // that the extension puts under window.webkit.messageHandlers
  unsigned pageMemoryLimit = 2048; // MB, of one web process; half as much again ends it
  bool softwareRendering = false;
  bool ephemeral = false; // keeps everything in memory; the two folders are not used
};

// What all web views have in common: the processes, the sandbox, the store. Must be made before any other use
// of the engine in this process. Lives as long as any web view.
class WebKitEngine {
 public:
  using Scripts = std::vector<std::shared_ptr<const UserScript>>;

  // Takes over what the engine has begun to download, before it asks where to; also what it begins by itself
  // for a link with a `download` attribute.
  using DownloadHandler = std::function<void(WebKitDownload*)>;

  WebKitEngine(const WebKitOptions& options, DownloadHandler downloads);

  glib::Ref<WebKitWebView> makeView(const Scripts& scripts) const;
  // For a page without scripts that loads nothing.
  glib::Ref<WebKitWebView> makeDocumentView() const;
  // A web view connected to its opener, for a window that a page opens. Call in the opener's "create" signal
  // only. The engine runs the opener's user scripts in it, whatever content manager it is given
  // (measured, 2.50): scripts of its own must be sent to the extension.
  glib::Ref<WebKitWebView> makePopup(WebKitWebView* opener) const;
  WebKitNetworkSession* session() const { return session_.get(); }
  WebKitWebContext* context() const { return context_.get(); }

  // Emitted by who has made it, at the end of the program: nothing more is done for what is under way.
  mutable base::Event<> willEnd;

 private:
  glib::Ref<WebKitSettings> makeSettings() const;

  glib::Ref<WebKitWebContext> context_;
  glib::Ref<WebKitNetworkSession> session_;
  bool softwareRendering_;
  glib::Connection downloadStarted_;
};

} // namespace ondrel::platform::webkit
