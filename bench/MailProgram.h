#pragma once

#include "async/Timer.h"
#include "jmap/JMAPSession.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/NotificationCenter.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeHttpClient.h"
#include "support/FakeLauncherBadge.h"
#include "support/FakeWebView.h"

#include <memory>
#include <string>

namespace ondrel::bench {

inline settings::Site siteAt(const std::string& address) {
  settings::Site site;
  site.webAppBaseURL = {address, address};
  site.jmapSessionURL = {address + "jmap/session", address + "jmap/session"};
  return site;
}

// The program's JMAP client on the service at that address. Only the page that gives the token and what has
// no part in the measurements are stand-ins. On the current event loop.
class MailProgram {
 public:
  // Both outlive it.
  MailProgram(const std::string& address, platform::HttpClient& http, platform::NotificationCenter& center)
      : settings_(defaults_, siteAt(address)), notifications_(center) {
    webViews_.onMake = [this](support::FakeWebView& view) {
      page_ = &view;
      view.answer = [](const std::string&) -> platform::ScriptResult { return "a-token-of-the-page"; };
    };
    session_ = std::make_unique<jmap::JMAPSession>(jmap::JMAPServices{.settings = settings_,
                                                                      .webViews = webViews_,
                                                                      .cookies = cookies_,
                                                                      .http = http,
                                                                      .launcherBadge = launcherBadge_,
                                                                      .sleepMonitor = sleepMonitor_,
                                                                      .notifications = notifications_,
                                                                      .openURL = [](const std::string&) {}});
    load_ = async::Timer({}, [this] { page_->delegate->didFinish(); });
  }

  jmap::JMAPSession& session() { return *session_; }

 private:
  support::FakeDefaults defaults_;
  settings::AppSettings settings_;
  support::FakeWebViewFactory webViews_;
  support::FakeWebView* page_ = nullptr;
  support::FakeCookieStore cookies_;
  support::FakeLauncherBadge launcherBadge_;
  support::FakeSleepMonitor sleepMonitor_;
  jmap::NotificationManager notifications_;
  std::unique_ptr<jmap::JMAPSession> session_;
  async::Timer load_;
};

} // namespace ondrel::bench
