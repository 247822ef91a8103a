#pragma once

#include "platform/Download.h"
#include "platform/WebViewDelegate.h"

namespace ondrel::platform {

// For web views that are none of the user's tabs: their page opens no windows, asks nothing, tells nothing
// and downloads nothing. What may be loaded is for the deriving class to say.
class PassiveWebViewDelegate : public WebViewDelegate {
 public:
  void didCommit() override {}
  void didFinish() override {}
  void didFail(const WebError&) override {}
  void didFailProvisional(const WebError& error) override { didFail(error); }
  void didBecomeDownload(std::shared_ptr<Download> download) override { download->cancel(); }
  std::shared_ptr<WebView> createWebView(NewWindowRequest) override { return nullptr; }
  void runAlertPanel(const std::string&, DoneReply) override {}
  void runConfirmPanel(const std::string&, DoneReply) override {}
  void runPromptPanel(const std::string&, const std::string&, PromptReply) override {}
  void runBeforeUnloadPanel(DoneReply) override {}
  void runOpenPanel(const OpenPanelParameters&, FilesReply) override {}
  void didReceiveScriptMessage(const ScriptMessage&) override {}
  void didClose() override {}
  void webProcessDidTerminate(bool) override {}
  void backForwardListDidChange() override {}
  void urlDidChange() override {}
};

// For pages that the program has loaded for itself and shows to nobody: they go where they want, and nothing
// is downloaded.
class HiddenPageDelegate : public PassiveWebViewDelegate {
 public:
  void decidePolicy(const NavigationAction& action, PolicyReply reply) override {
    std::move(reply)(action.shouldPerformDownload ? NavigationPolicy::cancel : NavigationPolicy::allow);
  }
  void decidePolicy(const NavigationResponse& response, PolicyReply reply) override {
    std::move(reply)(response.canShowMimeType ? NavigationPolicy::allow : NavigationPolicy::cancel);
  }
};

} // namespace ondrel::platform
