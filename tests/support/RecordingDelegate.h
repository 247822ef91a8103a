#pragma once

#include "platform/Download.h"
#include "platform/WebView.h"
#include "platform/WebViewDelegate.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace ondrel::tests {

using namespace platform;

// Writes down what a web view tells, one word or line for each call, and answers as the hooks say.
class RecordingDelegate : public WebViewDelegate {
 public:
  std::vector<std::string> events;
  std::vector<ScriptMessage> messages;
  std::vector<NavigationAction> actions;
  std::vector<NavigationResponse> responses;
  std::vector<std::shared_ptr<Download>> downloads;
  std::vector<WebError> errors;

  std::function<NavigationPolicy(const NavigationAction&)> onAction;
  std::function<NavigationPolicy(const NavigationResponse&)> onResponse;
  std::function<std::shared_ptr<WebView>(NewWindowRequest)> onCreate;
  std::function<void(const std::string&, DoneReply)> onAlert;
  std::function<void(const std::string&, DoneReply)> onConfirm;
  std::function<void(const std::string&, PromptReply)> onPrompt;
  std::function<void(DoneReply)> onBeforeUnload;
  std::function<void(std::shared_ptr<Download>)> onDownload;
  std::function<void(const std::string&)> onEvent; // after each of `events`

  long count(std::string_view event) const { return std::ranges::count(events, event); }

  void decidePolicy(const NavigationAction& action, PolicyReply reply) override {
    actions.push_back(action);
    std::move(reply)(onAction ? onAction(action) : NavigationPolicy::allow);
  }
  void decidePolicy(const NavigationResponse& response, PolicyReply reply) override {
    responses.push_back(response);
    std::move(reply)(onResponse ? onResponse(response) : NavigationPolicy::allow);
  }
  void didCommit() override { note("commit"); }
  void didFinish() override { note("finish"); }
  void didFail(const WebError& error) override { fail("fail", error); }
  void didFailProvisional(const WebError& error) override { fail("failProvisional", error); }
  void didBecomeDownload(std::shared_ptr<Download> download) override {
    downloads.push_back(download);
    if (onDownload)
      onDownload(download);
    note("download");
  }
  std::shared_ptr<WebView> createWebView(NewWindowRequest request) override {
    note("create");
    return onCreate ? onCreate(std::move(request)) : nullptr;
  }
  void runAlertPanel(const std::string& message, DoneReply reply) override {
    if (onAlert)
      onAlert(message, std::move(reply));
    note("alert " + message);
  }
  void runConfirmPanel(const std::string& message, DoneReply reply) override {
    if (onConfirm)
      onConfirm(message, std::move(reply));
    note("confirm " + message);
  }
  void runPromptPanel(const std::string& message, const std::string& text, PromptReply reply) override {
    if (onPrompt)
      onPrompt(text, std::move(reply));
    note("prompt " + message);
  }
  void runBeforeUnloadPanel(DoneReply reply) override {
    if (onBeforeUnload)
      onBeforeUnload(std::move(reply));
    note("beforeUnload");
  }
  void runOpenPanel(const OpenPanelParameters&, FilesReply) override { note("openPanel"); }
  void didReceiveScriptMessage(const ScriptMessage& message) override {
    messages.push_back(message);
    note("message");
  }
  void didClose() override { note("close"); }
  void webProcessDidTerminate(bool crashed) override { note(crashed ? "crashed" : "terminated"); }
  void didRefuseFiles(const std::string& text) override { note("refused " + text); }
  void backForwardListDidChange() override {}
  void urlDidChange() override {}
  void responsivenessDidChange() override { note("responsiveness"); }

 private:
  void note(std::string event) {
    events.push_back(std::move(event));
    if (onEvent)
      onEvent(std::string(events.back()));
  }
  void fail(const char* kind, const WebError& error) {
    errors.push_back(error);
    note(fmt::format("{} {} {}", kind, error.domainName(), error.code));
  }
};

} // namespace ondrel::tests
