#pragma once

#include "async/EventLoop.h"
#include "async/Task.h"
#include "base/Base64.h"
#include "base/Reply.h"
#include "platform/FrameInfo.h"
#include "platform/NativeView.h"
#include "platform/ScriptError.h"
#include "platform/UserScript.h"

#include <boost/json/value.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {

class PageFinder;
class Window;
class WebViewDelegate;

// null for undefined and null.
using ScriptResult = std::expected<boost::json::value, ScriptError>;

struct PrintSettings {
  double marginTop = 20; // points
  double marginBottom = 20;
  double marginLeft = 20;
  double marginRight = 20;
  // Where to write a PDF without asking; absent: the platform's print panel shows.
  std::optional<std::string> pdfPath;
  // What the panel proposes where the user prints to a file: without its ending; empty for the platform's.
  std::string name{};
  // Has the page made ready for paper, after the panel and before the page is read. May be empty.
  std::function<async::Task<void>()> arrange{};
  // Told the path when the user prints to a file by the panel. May be empty.
  std::function<void(std::string path)> writesFile{};
};

enum class PrintResult { done, cancelled, failed };

// A page that wants its user asked before it goes, and waits meanwhile: true to leave it, false to stay.
using LeaveReply = base::Reply<bool>;

// Whether the page that the history stands at is loaded with it, or another one comes at once.
enum class RestoredLoad { page, nothing };

// One page of the web engine with its back-forward list. Main thread only. Shared: its view, the model that
// shows it and running operations hold it; destroying the last reference ends its page.
class WebView {
 public:
  virtual ~WebView() = default;

  // Borrowed; must outlive its time as delegate, that is until setDelegate(nullptr).
  virtual void setDelegate(WebViewDelegate* delegate) = 0;

  // Adds a name under window.webkit.messageHandlers; a name that is there already is a programming error.
  // Messages under other names are dropped.
  virtual void addScriptMessageHandler(const std::string& name) = 0;
  virtual void removeScriptMessageHandler(const std::string& name) = 0; // an unknown name is ignored

  // Loads with the protocol's cache policy; fails with WebError::timedOut when nothing has been committed
  // after 60 s.
  virtual void load(const std::string& url) = 0;
  // Shows a page that has no address.
  virtual void loadHTML(const std::string& html) = 0;
  virtual void reload() = 0;
  virtual void stopLoading() = 0;
  virtual void goBack() = 0;
  virtual void goForward() = 0;

  // Asks the page whether it may go. None when it may, or hasn't answered within the deadline. Closes
  // nothing: that is the caller's, also after a reply of true. One at a time; open dialogs of the page hold
  // it up.
  virtual async::Task<std::optional<LeaveReply>> tryClose(async::Duration deadline) = 0;
  // Ends the page's process, whatever it is doing; webProcessDidTerminate follows.
  virtual void terminateWebProcess() = 0;
  // Whether the page's process answers. The engine looks when the user does something with the page, and says
  // that it doesn't when it has been silent for this long (measured, 2.50).
  static constexpr async::Duration silenceNoticed = std::chrono::seconds(3);
  virtual bool isResponsive() const = 0;

  virtual std::optional<std::string> url() const = 0;
  virtual std::optional<std::string> title() const = 0;
  virtual bool canGoBack() const = 0;
  virtual bool canGoForward() const = 0;
  // How much of the page has come, from 0 to 1; absent while nothing is loading.
  virtual std::optional<double> loadProgress() const = 0;

  virtual double pageZoom() const = 0;
  virtual void setPageZoom(double zoom) = 0;

  // Runs source in the page's world: in the main frame, or in the given one. Never answers later than the
  // deadline.
  virtual async::Task<ScriptResult> evaluate(std::string source, std::optional<FrameInfo> frame,
                                             async::Duration deadline) = 0;

  // Back-forward list and scroll positions as opaque bytes of the engine; absent when there is nothing to
  // keep, or too much. Costs 170 times their size in memory for a moment.
  virtual std::optional<base::Bytes> interactionState() = 0;
  // False when the bytes are none of this engine's; the web view is then as it was.
  virtual bool restoreInteractionState(const base::Bytes& state, RestoredLoad load) = 0;

  virtual async::Task<PrintResult> print(PrintSettings settings) = 0;

  // Lives as long as the web view.
  virtual PageFinder& finder() = 0;
  virtual NativeView nativeView() = 0;
};

// Makes web views that share one persistent store of cookies and data. None has the engine's inspector.
class WebViewFactory {
 public:
  virtual ~WebViewFactory() = default;
  virtual std::shared_ptr<WebView> make(const std::vector<std::shared_ptr<const UserScript>>& scripts) = 0;
  // For pages that the program itself makes of other people's texts: no script of theirs runs, nothing is
  // loaded for them from anywhere, and their menu only copies. Links ask the delegate.
  virtual std::shared_ptr<WebView> makeDocumentView() = 0;
};

} // namespace ondrel::platform
