#pragma once

#include "async/Future.h"
#include "async/Task.h"
#include "async/Timer.h"
#include "jmap/protocol/JMAPError.h"
#include "platform/PassiveWebViewDelegate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class WebView;
class WebViewFactory;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::jmap {

// The hidden web view that has the web application loaded so that it can be asked for its access token. It
// shares cookies and storage with the visible ones, so their sign-in is its own. Never shown. Main thread
// only.
class SignedInPage final : platform::HiddenPageDelegate {
 public:
  // Makes the web view and loads nothing yet. `finished` is called at each finished load, after everyone who
  // waited has been answered. Both references outlive it.
  SignedInPage(platform::WebViewFactory& webViews, settings::AppSettings& settings,
               std::function<void()> finished);
  ~SignedInPage() override;

  // Loads the web application of the current environment.
  void load();
  // From now on the page counts as not loaded.
  void forget() { isPageLoaded_ = false; }

  // Loads the page unless it is loaded or somebody is waiting for that already.
  async::Task<Result<void>> waitForPageLoad();
  // The token of the page, asked for up to `attempts` times, 500 ms apart; nullopt where there is none.
  // `attempts` is not negative. The only error is `cancelled`.
  async::Task<Result<std::optional<std::string>>> pollAccessToken(int attempts);
  // Waits for the page and polls; without a token loads the page once more, unless that was done just before.
  async::Task<Result<std::string>> currentAccessToken();
  // Whether the page asks for a sign-in instead of showing mail, so that waiting for a token leads nowhere.
  // Answers within two seconds. Not every sign-in elsewhere is told: the page is loaded again now and then.
  async::Task<bool> isSignInShown();
  // To be called when a page of the service that the user sees has loaded: somebody may have signed in there.
  // Loads this one again if it had no token and still asks for a sign-in. Ends with the object at the latest.
  async::Task<void> visiblePageDidLoad();

 private:
  void didFinish() override;
  void didFail(const platform::WebError& error) override;
  void webProcessDidTerminate(bool crashed) override;

  // Other pages are asked nothing.
  bool isAtService() const;
  async::Task<bool> looksLikeSignIn();
  // True once in a while.
  bool takeRecovery();
  void failWaiters(const std::string& reason);

  settings::AppSettings& settings_;
  std::function<void()> finished_;
  std::shared_ptr<platform::WebView> webView_;
  std::vector<async::Resolver<Result<void>>> readyContinuations_;
  bool isPageLoaded_ = false;
  bool signInWasShown_ = false; // at the last look
  bool tokenIsMissing_ = false; // likewise
  // A load that is never finished must not keep its waiters for ever.
  async::Timer loadDeadline_;
  // Where nobody asks again, as after a start without network, the page would never be loaded.
  async::Timer retry_;
  std::optional<async::TimePoint> lastRecovery_; // when it was loaded for want of a token
};

} // namespace ondrel::jmap
