#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "base/Log.h"
#include "platform/WebViewDelegate.h"
#include "web/ExternalLinks.h"
#include "web/GestureLimit.h"
#include "web/LetterHandOver.h"
#include "web/LoadRetry.h"
#include "web/ScriptMessageFields.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::base {
class Url;
}

namespace ondrel::platform {
class Window;
}

namespace ondrel::web {

class DownloadItem;
class WindowViewModel;
struct WebServices;
struct WebViewConfiguration;

// The host's side of one web view: decides where its navigations go, opens windows and panels for its page,
// and dispatches its script messages. Owned by the web view's place in the interface; its destruction
// detaches it from the web view and ends its work. Main thread only.
class Coordinator final : public platform::WebViewDelegate {
 public:
  Coordinator(const std::shared_ptr<WindowViewModel>& viewModel, std::shared_ptr<platform::WebView> webView,
              std::shared_ptr<const WebViewConfiguration> configuration, const WebServices& services);
  ~Coordinator() override;

  // Becomes the web view's delegate and message handler. A prebuilt web view has the handlers' names already.
  void attach(bool prebuilt);

  void decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) override;
  void decidePolicy(const platform::NavigationResponse& response, platform::PolicyReply reply) override;
  void didCommit() override;
  void didFinish() override;
  void didFail(const platform::WebError& error) override;
  void didFailProvisional(const platform::WebError& error) override;
  void didBecomeDownload(std::shared_ptr<platform::Download> download) override;
  std::shared_ptr<platform::WebView> createWebView(platform::NewWindowRequest request) override;
  void runAlertPanel(const std::string& message, platform::DoneReply reply) override;
  void runConfirmPanel(const std::string& message, platform::DoneReply reply) override;
  void runPromptPanel(const std::string& message, const std::string& text,
                      platform::PromptReply reply) override;
  void runBeforeUnloadPanel(platform::DoneReply reply) override;
  void runOpenPanel(const platform::OpenPanelParameters& parameters, platform::FilesReply reply) override;
  void didReceiveScriptMessage(const platform::ScriptMessage& message) override;
  void didRefuseFiles(const std::string& text) override;
  void didClose() override;
  void webProcessDidTerminate(bool crashed) override;
  void backForwardListDidChange() override;
  void urlDidChange() override;
  void loadingDidChange() override;
  void titleDidChange() override;
  void responsivenessDidChange() override;

 private:
  using OpenClosure = std::function<void(std::shared_ptr<WindowViewModel>, bool activate)>;
  using Message = platform::ScriptMessage;
  struct Route;
  static const Route routes[];

  std::shared_ptr<WindowViewModel> newViewModel(const std::string& url) const;
  void tellOfBlockedWindow(const std::optional<std::string>& url);
  enum class Place { window, tab, desktop };
  Place placeOf(const base::Url& url) const;
  bool wouldReplaceLetter(const platform::NavigationAction& action) const;
  // One for each press of the user.
  void handOver(const std::string& address, std::uint64_t gesture);
  void updatePageState();
  void failed(std::string_view label, const platform::WebError& error, bool provisional);

  void forward(const Message& message);
  void titleChange(const ScriptMessageFields& fields, const Message& message);
  void mouseover(const ScriptMessageFields& fields, const Message& message);
  void print(const ScriptMessageFields& fields, const Message& message);
  void composeReady(const ScriptMessageFields& fields, const Message& message);
  void compose(const ScriptMessageFields& fields, const Message& message);
  void sendClicked(const ScriptMessageFields& fields, const Message& message);
  void discardClicked(const ScriptMessageFields& fields, const Message& message);
  void discardUndone(const ScriptMessageFields& fields, const Message& message);
  void writingChanged(const ScriptMessageFields& fields, const Message& message);
  void consoleLog(const ScriptMessageFields& fields, const Message& message);
  void filesAutoShare(const ScriptMessageFields& fields, const Message& message);

  async::Task<void> printWithPanel(std::weak_ptr<platform::WebView> webView);
  async::Task<void> answerOpenPanel(platform::OpenPanelParameters parameters, platform::FilesReply reply);

  async::Task<void> chooseDestination(std::shared_ptr<platform::Download> download, std::string suggestedName,
                                      std::optional<std::string> mimeType,
                                      base::Reply<std::optional<std::string>> reply);
  void downloadDidFinish(platform::Download* download);
  void downloadDidFail(platform::Download* download, const std::string& error);
  async::Task<void> retire(std::shared_ptr<DownloadItem> item);

  std::shared_ptr<platform::Window> window() const;
  void closeWindow(); // for good

  std::weak_ptr<WindowViewModel> viewModel_;
  std::shared_ptr<platform::WebView> webView_;
  const std::shared_ptr<const WebViewConfiguration> configuration_;
  const WebServices& services_;
  const OpenClosure openInNewWindow_;
  const OpenClosure openInNewTab_;
  const base::Logger uiLogger_{"ui"};
  const base::Logger scriptLogger_{"script"};
  std::vector<std::string> registeredHandlerNames_;

  struct RunningDownload {
    std::shared_ptr<platform::Download> download;
    std::shared_ptr<DownloadItem> item; // none until the destination is chosen
    std::vector<base::Subscription> subscriptions;
  };
  std::map<platform::Download*, RunningDownload> downloadItems_;

  async::TaskHandle printTask_;
  GestureLimit windows_;   // that the page opens
  GestureLimit handOvers_; // to the desktop
  LoadRetry loadRetry_;
  ExternalLinks externalLinks_;
  bool titleIsDue_ = false; // the page finished without one, which may still be on its way
  LetterHandOver letter_;
  async::Scope scope_;
};

} // namespace ondrel::web
