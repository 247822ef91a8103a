#pragma once

#include "Bench.h"
#include "async/Signal.h"
#include "platform/WebViewDelegate.h"

namespace ondrel::bench {

// Allows a page everything, and tells when a load has ended. A page that fails ends the program.
class PageDelegate : public platform::WebViewDelegate {
 public:
  async::Signal loaded;

  void decidePolicy(const platform::NavigationAction&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void decidePolicy(const platform::NavigationResponse&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void didCommit() override {}
  void didFinish() override { loaded.send(); }
  void didFail(const platform::WebError& error) override { fail(error.description); }
  void didFailProvisional(const platform::WebError& error) override { fail(error.description); }
  void didBecomeDownload(std::shared_ptr<platform::Download>) override {}
  std::shared_ptr<platform::WebView> createWebView(platform::NewWindowRequest) override { return nullptr; }
  void runAlertPanel(const std::string&, platform::DoneReply) override {}
  void runConfirmPanel(const std::string&, platform::DoneReply) override {}
  void runOpenPanel(const platform::OpenPanelParameters&, platform::FilesReply) override {}
  void didReceiveScriptMessage(const platform::ScriptMessage&) override {}
  void didClose() override {}
  void webProcessDidTerminate(bool) override { fail("the web process is gone"); }
  void backForwardListDidChange() override {}
  void urlDidChange() override {}
};

} // namespace ondrel::bench
