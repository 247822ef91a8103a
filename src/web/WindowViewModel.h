#pragma once

#include "async/Task.h"
#include "base/Base64.h"
#include "base/Observable.h"
#include "base/Translation.h"
#include "platform/FrameInfo.h"
#include "platform/WebView.h"
#include "web/WebViewConfiguration.h"
#include "web/page/FirstPage.h"
#include "web/page/HangWatch.h"
#include "web/page/PageDialogs.h"
#include "web/page/PageNotice.h"
#include "web/page/PageProblem.h"
#include "web/page/PageSearch.h"

#include <boost/json/value.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Window;
}

namespace ondrel::web {

class DownloadItem;
struct WebServices;

// The whole state of one browser window, which is one tab: what toolbar, menus and session need to know about
// its page, and the operations on it. Always owned by a shared_ptr. Main thread only. A missing web view is
// no error: each operation then quietly does nothing.
class WindowViewModel : public std::enable_shared_from_this<WindowViewModel> {
 public:
  using OpenClosure = std::function<void(std::shared_ptr<WindowViewModel>, bool activate)>;

  // `services` outlives all view models.
  static std::shared_ptr<WindowViewModel> make(const WebServices& services);

  // The page zoom of this window, the user's choice for new ones at first, written at each zoom step and
  // restored from the session. Not clamped.
  base::Observable<double> initialPageZoom;
  std::shared_ptr<const WebViewConfiguration> webViewConfiguration;
  base::Observable<bool> toolbarVisible{true};
  base::Observable<std::string> urlString; // as last reported or requested
  // Of the page that has come and is shown, whatever is on its way; empty for pages of the service.
  base::Observable<std::string> foreignHost;
  base::Observable<std::string> title{std::string(base::tr("New Tab"))};
  base::Observable<std::string> mouseOverString; // the hovered link
  base::Observable<bool> canGoBack{false};
  base::Observable<bool> canGoForward{false};
  base::Observable<bool> canZoomIn{true};
  base::Observable<bool> canZoomOut{true};
  base::Observable<bool> isZoomDefault{true};
  static constexpr double zoomStep = 0.05;

  std::weak_ptr<platform::Window> window;
  std::shared_ptr<platform::WebView> liveWebView() const { return webView_.lock(); }
  void setWebView(const std::shared_ptr<platform::WebView>& webView);
  // The web view has come or gone.
  base::Event<> webViewChanged;

  FirstPage firstPage;
  // Its page or the program closes it, and it shall not be opened again.
  bool isDone = false;

  // Sees messages that no handler of the program's takes.
  std::function<void(const std::string& name, const boost::json::value& body)> onScriptMessage;

  OpenClosure openInNewWindow;
  OpenClosure openInNewTab;

  base::Observable<std::vector<std::shared_ptr<DownloadItem>>> downloads;

  // What the user is told above the page until they put it away; empty for nothing.
  base::Observable<std::string> notice;
  // The user has sent or discarded the letter of this page, and the page hasn't let go of it.
  base::Observable<bool> letterIsLeaving{false};
  // The page says that a letter is being written in it.
  bool reportsWriting = false;

  base::Observable<bool> isLoading{false};
  base::Observable<double> loadProgress{0}; // of the last load, from 0 to 1
  base::Observable<PageProblem> pageProblem{};
  PageDialogs dialogs;
  HangWatch hangWatch{pageProblem};
  base::Event<const PageNotice&> noticed;
  // What nobody has shown yet; for who begins to follow `noticed`.
  std::optional<PageNotice> pendingNotice;
  // A file of the user's has been made of its page.
  base::Event<const std::string&> fileMade;
  PageSearch search;

  // Tells of it now, or when the tab is looked at for the first time.
  void tell(PageNotice told);

  // Loads what urlString holds, with "https://" where there is no scheme.
  void loadURL();
  // urlString becomes the address, and a live web view loads it.
  void show(const std::string& url);
  void goBack();
  void goForward();
  // Loads the page that is shown again; without one, what failed last or what urlString holds. A page that
  // hangs is ended.
  void reload();
  // Gives up what is loading. Where there is no page yet, its problem says so.
  void stop() const { stopAsked.emit(); }
  base::Event<> stopAsked; // for who follows the loads
  void reloadOrStop();
  // Asks once more for what could not be loaded.
  void tryAgain();
  // Asks the page whether the tab may be closed, as platform::WebView::tryClose does; its dialogs go for
  // that.
  async::Task<std::optional<platform::LeaveReply>> tryClose();

  // Its page has come from the service.
  bool showsService() const;
  // In the main frame while that shows a page of the service, or in the given one. null when there is no web
  // view.
  async::Task<platform::ScriptResult> evaluate(std::string source,
                                               std::optional<platform::FrameInfo> frame = {});
  async::Task<void> setComposeInWindow(bool composeInWindow);

  void zoomIn();
  void zoomOut();
  void zoomToActualSize();
  // For gestures, which know no enablement: as far as the controls would go.
  void zoomBy(int steps);
  // Brings enablement and the live web view in line with initialPageZoom.
  void applyZoom();

  async::Task<void> exportPDF();
  // With the print panel.
  async::Task<void> print();

  // The account that its address names; absent for pages of others.
  std::optional<std::string> accountParameter() const;
  // The page composes a message.
  bool isComposeURL() const;
  // A letter is being written here, as a page of its own or inside another: nobody but the user leads such a
  // tab elsewhere.
  bool isWritingLetter() const;

 private:
  explicit WindowViewModel(const WebServices& services);

  const WebServices& services_;
  std::weak_ptr<platform::WebView> webView_;
};

} // namespace ondrel::web
