#pragma once

#include "platform/WebView.h"
#include "platform/WebViewDelegate.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "platform/linux/pagefiles/WebKitPageFiles.h"
#include "platform/linux/webkit/WebKitBackground.h"
#include "platform/linux/webkit/WebKitClosing.h"
#include "platform/linux/webkit/WebKitFinder.h"
#include "platform/linux/webkit/WebKitLoads.h"
#include "platform/linux/webkit/WebKitMenu.h"
#include "platform/linux/webkit/WebKitMenuKey.h"
#include "platform/linux/webkit/WebKitMessagePacing.h"
#include "platform/linux/windows/UserPresses.h"

#include <webkit/webkit.h>

#include <set>

namespace ondrel::platform::webkit {

class WebKitEngine;

// A web view of the engine. Its native view is a plain container around the engine's widget, so that the page
// can end while the container is still somewhere on screen.
class WebKitView final : public WebView,
                         public std::enable_shared_from_this<WebKitView>,
                         private WebKitLoads::Listener {
 public:
  using Scripts = std::vector<std::shared_ptr<const UserScript>>;

  static std::shared_ptr<WebKitView> make(std::shared_ptr<const WebKitEngine> engine, Scripts scripts);
  static std::shared_ptr<WebKitView> makeDocument(std::shared_ptr<const WebKitEngine> engine);
  // The web view around the engine's one; none when it is gone.
  static std::shared_ptr<WebKitView> of(WebKitWebView* view);
  ~WebKitView() override;

  void setDelegate(WebViewDelegate* delegate) override { delegate_ = delegate; }
  void addScriptMessageHandler(const std::string& name) override;
  void removeScriptMessageHandler(const std::string& name) override;
  void load(const std::string& url) override;
  void loadHTML(const std::string& html) override;
  void reload() override;
  void stopLoading() override;
  void goBack() override;
  void goForward() override;
  async::Task<std::optional<LeaveReply>> tryClose(async::Duration deadline) override;
  void terminateWebProcess() override;
  bool isResponsive() const override;
  std::optional<std::string> url() const override;
  std::optional<std::string> title() const override;
  bool canGoBack() const override;
  bool canGoForward() const override;
  std::optional<double> loadProgress() const override;
  double pageZoom() const override;
  void setPageZoom(double zoom) override;
  async::Task<ScriptResult> evaluate(std::string source, std::optional<FrameInfo> frame,
                                     async::Duration deadline) override;
  std::optional<base::Bytes> interactionState() override;
  bool restoreInteractionState(const base::Bytes& state, RestoredLoad load) override;
  async::Task<PrintResult> print(PrintSettings settings) override;
  PageFinder& finder() override { return finder_; }
  NativeView nativeView() override;

  void didStartDownload(WebKitDownload* download);
  // None for a page without scripts.
  pagefiles::WebKitPageFiles* pageFiles() { return pageFiles_.get(); }

 private:
  WebKitView(std::shared_ptr<const WebKitEngine> engine, glib::Ref<WebKitWebView> view);
  static std::shared_ptr<WebKitView> connected(std::shared_ptr<WebKitView> view);
  std::shared_ptr<WebKitView> makePopup(const Scripts& scripts);
  void connectLoads();
  void connectQuestions();
  void connectProperties();
  void takeFiles();
  void limitMenu();
  bool fillMenu(WebKitContextMenu* menu, const ContextHit& hit);
  void choose(const MenuRow& row, const ContextHit& hit);
  template <class Signature, class Handler>
  void on(const char* signal, Handler handler);
  // Calls the delegate, if there is one, and keeps this object alive meanwhile.
  template <class Call>
  void tell(Call call);

  void showDialog(WebKitScriptDialog* dialog);
  void rememberWantedItem(const std::string& url);
  void sendExtraScripts();
  WebKitWebView* openWindow(WebKitNavigationAction* action);
  void receive(WebKitUserMessage* message);

  void loadCommitted() override;
  void loadFinished() override;
  void loadFailed(const WebError& error, bool provisional) override;
  void beginLoad(const std::string& url) override;
  void loadTimedOut(const WebError& error) override;

  std::shared_ptr<const WebKitEngine> engine_;
  glib::Ref<WebKitWebView> view_;
  glib::Ref<GtkWidget> container_;
  WebViewDelegate* delegate_ = nullptr;
  std::shared_ptr<const Scripts> engineScripts_; // that the engine runs; windows that pages open share them
  Scripts extraScripts_;                         // that the extension runs
  std::set<std::string, std::less<>> handlerNames_;
  WebKitLoads loads_{*this};
  WebKitClosing closing_{view_.get()};
  WebKitFinder finder_{view_.get()};
  bool stayed_ = false; // the user kept the page from being left for another
  // Of the history, asked for and not reached yet: a plain load of its address would add it a second time.
  glib::Ref<WebKitBackForwardListItem> wantedItem_;
  bool keepsHistory_ = true; // until its states are too large
  WebKitMenu menu_{view_.get()};
  WebKitBackground background_{view_.get()};
  WebKitMessagePacing messagePacing_;
  windows::UserPresses presses_{container_.get()};
  std::unique_ptr<pagefiles::WebKitPageFiles> pageFiles_;
  std::unique_ptr<WebKitMenuKey> menuKey_;
  std::shared_ptr<WebKitView> heldUntilShown_; // itself, as a new window of a page
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::platform::webkit
