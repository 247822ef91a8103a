#pragma once

#include "base/Reply.h"
#include "platform/ContextMenu.h"
#include "platform/FrameInfo.h"
#include "platform/Modifiers.h"
#include "platform/ScriptMessage.h"
#include "platform/UserScript.h"
#include "platform/WebError.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {

class Download;
class WebView;

enum class NavigationType { linkActivated, formSubmitted, backForward, reload, formResubmitted, other };
enum class NavigationPolicy { allow, cancel, download };

struct NavigationAction {
  NavigationType type = NavigationType::other;
  Modifiers modifiers; // a click with the middle button counts as one with Command
  std::optional<std::string> url;
  bool shouldPerformDownload = false; // the page asked for a download, with the link's `download` attribute
  // Presses of a key or button by the user in this web view so far: what follows from one has one number.
  std::uint64_t gesture = 0;
  bool isUserGesture = false; // it comes of such a press; the page didn't do it by itself
};

struct NavigationResponse {
  std::string url;
  bool isHttp = false;
  std::optional<std::string> contentDisposition; // the header's value as sent
  std::string mimeType;
  bool canShowMimeType = true;
  bool isMainFrame = true;
};

// The page asked for a window of its own. makeWebView makes the engine's side of it, connected to its opener,
// with these user scripts; call it at most once and during createWebView only.
struct NewWindowRequest {
  NavigationAction action;
  bool followsUser = true; // the user has clicked or typed in the page in these seconds
  std::function<std::shared_ptr<WebView>(std::vector<std::shared_ptr<const UserScript>>)> makeWebView;
};

struct OpenPanelParameters {
  bool allowsMultipleSelection = false;
  std::vector<std::string> mimeTypes; // what the page says it accepts; empty for anything
};

using PolicyReply = base::Reply<NavigationPolicy>;
using DoneReply = base::Reply<bool>; // for an alert the value has no meaning
using PromptReply = base::Reply<std::optional<std::string>>;
using FilesReply = base::Reply<std::optional<std::vector<std::string>>>;

// What a web view asks and tells. All calls come on the main thread, from the engine's own callbacks: the web
// view stays alive during the call whatever the delegate does. Replies may be answered later; dropped, they
// are answered safely (cancel, false, nothing).
class WebViewDelegate {
 public:
  virtual ~WebViewDelegate() = default;

  virtual void decidePolicy(const NavigationAction& action, PolicyReply reply) = 0;
  virtual void decidePolicy(const NavigationResponse& response, PolicyReply reply) = 0;
  virtual void didCommit() = 0;
  virtual void didFinish() = 0;
  virtual void didFail(const WebError& error) = 0;            // after the commit
  virtual void didFailProvisional(const WebError& error) = 0; // before it

  // An allowed navigation or response has turned into a download.
  virtual void didBecomeDownload(std::shared_ptr<Download> download) = 0;

  // The web view made by the request, or none to open no window. The engine holds the answer until its page
  // is shown.
  virtual std::shared_ptr<WebView> createWebView(NewWindowRequest request) = 0;

  virtual void runAlertPanel(const std::string& message, DoneReply reply) = 0;
  virtual void runConfirmPanel(const std::string& message, DoneReply reply) = 0;
  // With the text that the page puts into the field first.
  virtual void runPromptPanel(const std::string& message, const std::string& text, PromptReply reply) = 0;
  // The page wants its user asked before it is left for another one or loaded again: true to leave it.
  virtual void runBeforeUnloadPanel(DoneReply reply) = 0;
  virtual void runOpenPanel(const OpenPanelParameters& parameters, FilesReply reply) = 0;

  virtual void didReceiveScriptMessage(const ScriptMessage& message) = 0;

  // The page called window.close().
  virtual void didClose() = 0;
  // The web process is gone; the web view is blank until it loads again.
  virtual void webProcessDidTerminate(bool crashed) = 0;

  // The user asks for a menu: its rows, or none for no menu. Pages that show one of their own come first.
  virtual ContextMenu contextMenu(const ContextHit&) { return {}; }
  // They have chosen a row that is the program's. The gesture is that of NavigationAction.
  virtual void didChoose(MenuAction, const ContextHit&, std::uint64_t) {}

  // Files that the user dropped on the page or pasted into it did not get there: one line for the user.
  virtual void didRefuseFiles(const std::string&) {}

  // Properties changed: canGoBack and canGoForward, the address, loadProgress, the title, isResponsive.
  virtual void backForwardListDidChange() = 0;
  virtual void urlDidChange() = 0;
  virtual void loadingDidChange() {}
  virtual void titleDidChange() {}
  virtual void responsivenessDidChange() {}
};

} // namespace ondrel::platform
