#pragma once

#include "MailWorld.h"
#include "jmap/JMAPSession.h"
#include "jmap/newmail/NotificationManager.h"
#include "support/FakeHttpClient.h"
#include "support/FakeLauncherBadge.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeWebView.h"

#include <functional>
#include <vector>

namespace ondrel::jmap {

inline constexpr auto sessionText = R"({"apiUrl":"https://api.example.com/jmap/api/",
  "eventSourceUrl":"https://api.example.com/events/?types={types}&close={closeafter}&ping={ping}",
  "downloadUrl":"https://api.example.com/d/{accountId}/{blobId}/{name}",
  "primaryAccounts":{"urn:ietf:params:jmap:mail":"u123"},"state":"x"})";

// A session on fakes: the page is loaded when the test says so, the token is what `token` holds, and the
// server answers as one account does.
class JMAPSessionTest : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;
  using Response = platform::HttpResult<platform::HttpResponse>;

  JMAPSessionTest() {
    webViews.onMake = [this](support::FakeWebView& view) {
      page = &view;
      view.answer = [this](const std::string&) -> platform::ScriptResult { return token; };
    };
    http.answer = [this](const platform::HttpRequest& request) { return serve(request); };
    session.emplace(JMAPServices{.settings = settings,
                                 .webViews = webViews,
                                 .cookies = cookies,
                                 .http = http,
                                 .launcherBadge = launcherBadge,
                                 .sleepMonitor = sleepMonitor,
                                 .notifications = notifications,
                                 .openURL = [this](const std::string& url) { opened.push_back(url); }});
  }

  Response serve(const platform::HttpRequest& request) {
    if (onRequest)
      if (auto special = onRequest(request))
        return *special;
    if (request.method == "GET")
      return support::FakeHttpClient::ok(sessionText);
    const auto call = boost::json::parse(request.body).at("methodCalls").at(0);
    const std::string method(call.at(0).as_string());
    methods.push_back(method);
    return support::FakeHttpClient::ok(answers[method]);
  }
  // Does something at each request that holds a text; the answer stays as it is.
  void atRequest(std::string part, std::function<void()> act) {
    onRequest = [part = std::move(part), act = std::move(act)](const auto& request) {
      if (request.body.contains(part))
        act();
      return std::optional<Response>();
    };
  }

  void finishLoad() {
    page->delegate->didFinish();
    loop.runUntilIdle();
  }
  // Up to an open stream, and nothing recorded of the way.
  void connect() {
    finishLoad();
    ASSERT_EQ(http.feeds.size(), 1U);
    http.requests.clear();
    methods.clear();
    support::LogCapture::lines().clear();
  }
  void give(platform::HttpResult<std::string> chunk) {
    http.feeds.back()->give(std::move(chunk));
    loop.runUntilIdle();
  }
  long calls(const std::string& method) const { return std::ranges::count(methods, method); }

  // What a task gives within a time of the loop.
  template <class T>
  std::optional<T> run(async::Task<T> task, async::Duration limit = {}) {
    std::optional<T> result;
    async::Scope scope;
    scope.spawn(support::keepResult(std::move(task), &result));
    loop.runUntilIdle();
    if (!result)
      loop.runUntil([&] { return result.has_value(); }, limit);
    return result;
  }

  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeWebViewFactory webViews;
  support::FakeCookieStore cookies;
  support::FakeHttpClient http;
  support::FakeLauncherBadge launcherBadge;
  support::FakeSleepMonitor sleepMonitor;
  support::FakeNotificationCenter center;
  NotificationManager notifications{center};
  Lines opened;
  Lines methods;
  std::map<std::string, std::string> answers = goodReplies();
  std::function<std::optional<Response>(const platform::HttpRequest&)> onRequest;
  boost::json::value token = "secret-token";
  support::FakeWebView* page = nullptr;
  std::optional<JMAPSession> session;
};

} // namespace ondrel::jmap
