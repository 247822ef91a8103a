#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "base/Log.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/newmail/NewMailCheck.h"
#include "jmap/newmail/NewMailNotifier.h"
#include "jmap/newmail/UnreadBadge.h"
#include "jmap/protocol/EventStream.h"
#include "jmap/protocol/JMAPClient.h"
#include "jmap/protocol/JMAPTransport.h"
#include "jmap/protocol/RetryingWorker.h"
#include "jmap/protocol/SignedInPage.h"

#include <functional>
#include <optional>
#include <string>

namespace ondrel::platform {
class CookieStore;
class LauncherBadge;
class HttpClient;
class SleepMonitor;
class WebViewFactory;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::jmap {

class NotificationManager;

// What the session stands on; all outlive it.
struct JMAPServices {
  settings::AppSettings& settings;
  platform::WebViewFactory& webViews;
  platform::CookieStore& cookies;
  platform::HttpClient& http;
  platform::LauncherBadge& launcherBadge;
  platform::SleepMonitor& sleepMonitor;
  NotificationManager& notifications;
  // Shows a message of the web application in a window.
  std::function<void(const std::string& url)> openURL;
};

// The program's own JMAP client. It holds no credential: it asks the signed-in page for its token with each
// call. Beside the calls it keeps the event stream open, notifies of new mail and counts the unread. One for
// the process, main thread only.
class JMAPSession final : public JMAPClient {
 public:
  // Begins to load the page; everything else follows when that is there.
  explicit JMAPSession(JMAPServices services);
  ~JMAPSession() override;

  async::Task<Result<JMAPSessionData>> fetchSessionData() override;
  async::Task<Result<std::string>> currentAccessToken() override { return page_.currentAccessToken(); }
  async::Task<bool> isSignInShown() override { return page_.isSignInShown(); }
  async::Task<Result<JMAPReply>> send(JMAPSessionData session, std::string token,
                                      boost::json::object body) override;

  // A page of the service that the user sees has loaded: somebody may have signed in with it.
  void visiblePageDidLoad() { scope_.spawn(page_.visiblePageDidLoad()); }

  // The requests below all others, for what sends bodies of its own.
  JMAPTransport& transport() { return transport_; }
  MailQueries& mail() { return mail_; }

 private:
  async::Task<Result<platform::HttpRequest>> sessionRequest();
  void pageDidLoad();
  void environmentDidChange();
  void systemDidWake();
  void startFallbackLoop();
  async::Task<void> firstStart();
  async::Task<void> refreshBadgeNowAndThen();

  base::Logger logger_{"network"};
  settings::AppSettings& settings_;
  SignedInPage page_;
  JMAPTransport transport_;
  MailQueries mail_;
  NewMailNotifier notifier_;
  NewMailCheck newMail_;
  UnreadBadge badge_;
  RetryingWorker emailCheck_;
  RetryingWorker badgeRefresh_;
  EventStream eventStream_;
  std::optional<JMAPSessionData> cachedSessionData_;
  // Which one since the start. Not told by its addresses: several environments may share those.
  unsigned environmentNumber_ = 0;
  base::Subscription environmentChanges_;
  base::Subscription wakes_;
  async::TaskHandle fallbackTask_;
  async::Scope scope_;
};

} // namespace ondrel::jmap
