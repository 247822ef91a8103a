#pragma once

#include "async/Task.h"
#include "attachments/AttachmentError.h"
#include "base/Log.h"
#include "platform/PassiveWebViewDelegate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {
class WebView;
class WebViewFactory;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::attachments {

// A hidden web view that opens messages in the web application and finds the links to their attachments, as
// the user would. It shares the sign-in of the visible ones and stays on the last message. Main thread only.
class LinkPage final : platform::HiddenPageDelegate {
 public:
  // The script is web::PageScripts::attachmentLink(). All outlive it. The web view is made at first use.
  LinkPage(platform::WebViewFactory& webViews, const settings::AppSettings& settings,
           const std::string& script);
  ~LinkPage() override;

  // Makes the web view and begins to load the web application, unless there is one.
  void open();
  // Loads the web application anew and looks for ten seconds whether it asks for a sign-in, or until nobody
  // wants to know any more.
  async::Task<bool> isSignInShown(std::function<bool()> isWanted);
  // The link to the blob on the message's page, as the page has it; at least 30 s are given for it to appear.
  // One at a time.
  async::Task<Result<std::string>> resolveAttachmentHref(std::string emailURL, std::string blobId);

 private:
  void didCommit() override { hasCommitted_ = true; }
  void didFail(const platform::WebError& error) override;
  void webProcessDidTerminate(bool crashed) override;

  void load(const std::string& url);
  bool isAtService() const;
  // The page asks for a sign-in, or has been sent to where people sign in.
  async::Task<bool> looksLikeSignIn();
  void close();

  platform::WebViewFactory& webViews_;
  const settings::AppSettings& settings_;
  const std::string& script_;
  const base::Logger logger_{"network"};
  std::shared_ptr<platform::WebView> webView_;
  // What is shown came with the last load. Until then it is another page, of whoever sent it.
  bool hasCommitted_ = false;
  std::optional<std::string> failure_; // of the load or the process
};

} // namespace ondrel::attachments
