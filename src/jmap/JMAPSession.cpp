#include "jmap/JMAPSession.h"

#include "async/sleep.h"
#include "platform/desktop/SleepMonitor.h"
#include "settings/AppSettings.h"

#include <utility>

namespace ondrel::jmap {

namespace {

// For what an event stream that is down doesn't tell.
constexpr std::chrono::seconds badgeFallbackInterval{300};

} // namespace

JMAPSession::JMAPSession(JMAPServices services)
    : settings_(services.settings), page_(services.webViews, services.settings, [this] { pageDidLoad(); }),
      transport_(services.http, services.cookies, [this] { return page_.currentAccessToken(); }),
      mail_(*this, services.settings, [this] { badgeRefresh_.wake(); }),
      notifier_(*this, mail_, services.notifications, services.settings, std::move(services.openURL),
                [this] { badgeRefresh_.wake(); }),
      newMail_(*this, notifier_), badge_(mail_, services.settings, services.launcherBadge),
      emailCheck_([this] { return newMail_.checkAndNotifyNewEmails(); }),
      badgeRefresh_([this] { return badge_.refresh(); }),
      eventStream_(*this, services.http,
                   {.firstStart = [this] { return firstStart(); },
                    .mailboxesChanged = [this] { badgeRefresh_.wake(); },
                    .emailsChanged = [this] { emailCheck_.wake(); }}) {
  page_.load();
  environmentChanges_ = settings_.fastmailEnvironmentDidChange.subscribe([this] { environmentDidChange(); });
  wakes_ = services.sleepMonitor.didWake.subscribe([this] { systemDidWake(); });
}

JMAPSession::~JMAPSession() = default;

async::Task<Result<JMAPSessionData>> JMAPSession::fetchSessionData() {
  if (cachedSessionData_)
    co_return *cachedSessionData_;
  const auto environment = environmentNumber_;
  const std::string url = settings_.jmapSessionURL(settings_.currentEnvironment());
  const auto reply = co_await transport_.sendWithRetry(JMAPTransport::callAttempts,
                                                       [this](int) { return sessionRequest(); });
  if (!reply)
    co_return std::unexpected(reply.error());
  auto data = JMAPSessionData::decode(reply->json, url);
  // A resource of the environment that has been left meanwhile serves its call and nobody else.
  if (data && environment == environmentNumber_)
    cachedSessionData_ = *data;
  co_return data;
}

async::Task<Result<platform::HttpRequest>> JMAPSession::sessionRequest() {
  auto token = co_await page_.currentAccessToken();
  if (!token)
    co_return std::unexpected(std::move(token.error()));
  co_return co_await transport_.authorizedRequest(settings_.jmapSessionURL(settings_.currentEnvironment()),
                                                  std::move(*token));
}

async::Task<Result<JMAPReply>> JMAPSession::send(JMAPSessionData session, std::string token,
                                                 boost::json::object body) {
  return transport_.sendWithRetry(
      JMAPTransport::callAttempts,
      [this, session = std::move(session), token = std::move(token), body = std::move(body)](int attempt) {
        return transport_.makeJMAPRequest(attempt, token, session, body);
      });
}

void JMAPSession::pageDidLoad() {
  eventStream_.start(true);
  startFallbackLoop();
}

async::Task<void> JMAPSession::firstStart() {
  co_await notifier_.setUp();
  // The page is loaded anew also when its token has gone: what came meanwhile is new, and the opened stream
  // makes us look for it.
  co_await newMail_.seedEmailState();
}

void JMAPSession::startFallbackLoop() {
  fallbackTask_.cancel();
  fallbackTask_ = scope_.spawn(refreshBadgeNowAndThen());
}

async::Task<void> JMAPSession::refreshBadgeNowAndThen() {
  while (true) {
    const bool slept = co_await async::sleep(badgeFallbackInterval);
    if (!slept)
      co_return;
    badgeRefresh_.wake();
  }
}

// Other calls that are under way end with the account they began with.
void JMAPSession::environmentDidChange() {
  ++environmentNumber_;
  eventStream_.stop();
  fallbackTask_.cancel();
  cachedSessionData_.reset();
  mail_.forgetMailboxes();
  emailCheck_.restart();
  newMail_.clear();
  notifier_.forget();
  badgeRefresh_.restart();
  badge_.clear();
  page_.forget();
  page_.load();
}

void JMAPSession::systemDidWake() {
  logger_.info("System woke from sleep — forcing SSE reconnect");
  eventStream_.start(false);
}

} // namespace ondrel::jmap
