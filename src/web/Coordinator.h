#pragma once

#include "async/Scope.h"
#include "base/Log.h"
#include "platform/WebViewDelegate.h"
#include "web/LetterHandOver.h"
#include "web/LoadRetry.h"
#include "web/PageAdditions.h"
#include "web/PageFollower.h"
#include "web/PageMenu.h"
#include "web/PageMessages.h"
#include "web/PageOpener.h"
#include "web/TabDownloads.h"

#include <memory>
#include <string>
#include <vector>

namespace ondrel::web {

class WindowViewModel;
struct WebServices;
struct WebViewConfiguration;

// The host's side of one web view: takes what the engine asks and tells, and hands it on to those who know.
// Owned by the web view's place in the interface; its destruction detaches it from the web view and ends its
// work. Main thread only.
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
  platform::ContextMenu contextMenu(const platform::ContextHit& hit) override;
  void didChoose(platform::MenuAction action, const platform::ContextHit& hit,
                 std::uint64_t gesture) override;
  void didRefuseFiles(const std::string& text) override;
  void didClose() override;
  void webProcessDidTerminate(bool crashed) override;
  void backForwardListDidChange() override;
  void urlDidChange() override;
  void loadingDidChange() override;
  void titleDidChange() override;
  void responsivenessDidChange() override;

 private:
  void failed(std::string_view label, const platform::WebError& error, bool provisional);

  std::weak_ptr<WindowViewModel> viewModel_;
  std::shared_ptr<platform::WebView> webView_;
  const std::shared_ptr<const WebViewConfiguration> configuration_;
  const WebServices& services_;
  const base::Logger logger_{"ui"};
  std::vector<std::string> registeredHandlerNames_;
  PageFollower follower_;
  LoadRetry loadRetry_;
  PageAdditions additions_;
  TabDownloads downloads_;
  PageOpener opener_;
  PageMenu menu_;
  LetterHandOver letter_;
  PageMessages messages_;
  async::Scope scope_;
};

} // namespace ondrel::web
