#pragma once

#include "async/VirtualEventLoop.h"
#include "jmap/JMAPSession.h"
#include "jmap/NotificationManager.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeDockTile.h"
#include "support/FakeHttpClient.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeWebView.h"
#include "support/LogCapture.h"
#include "support/TestSite.h"

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::jmap {

inline constexpr auto sessionText = R"({"apiUrl":"https://api.example.com/jmap/api/",
  "eventSourceUrl":"https://api.example.com/events/?types={types}&close={closeafter}&ping={ping}",
  "downloadUrl":"https://api.example.com/d/{accountId}/{blobId}/{name}",
  "primaryAccounts":{"urn:ietf:params:jmap:mail":"u123"},"state":"x"})";

// A session on fakes: the page is loaded when the test says so, the token is what `token` holds, and the
// server answers methods from a table.
class JMAPSessionTest : public testing::Test {
 protected:
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
                                 .dockTile = dockTile,
                                 .sleepMonitor = sleepMonitor,
                                 .notifications = notifications,
                                 .openURL = [this](const std::string& url) { opened.push_back(url); }});
  }

  platform::HttpResult<platform::HttpResponse> serve(const platform::HttpRequest& request) {
    if (onRequest)
      if (auto special = onRequest(request))
        return *special;
    if (request.method == "GET")
      return support::FakeHttpClient::ok(sessionText);
    const auto call = boost::json::parse(request.body).at("methodCalls").at(0);
    const std::string method(call.at(0).as_string());
    methods.push_back(method);
    const auto special = answers.find(method + " " + std::string(call.at(2).as_string()));
    const auto& arguments = special == answers.end() ? answers[method] : special->second;
    return support::FakeHttpClient::ok("{\"methodResponses\":[[\"" + method + "\"," + arguments +
                                       ",\"x\"]]}");
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
  long calls(const std::string& method) const { return std::ranges::count(methods, method); }

  // Runs a task to its end, within a time of the loop.
  template <class T>
  std::optional<T> run(async::Task<T> task, async::Duration limit = {}) {
    std::optional<T> result;
    async::Scope scope;
    scope.spawn(store(std::move(task), result));
    loop.runUntilIdle();
    if (!result)
      loop.runUntil([&] { return result.has_value(); }, limit);
    return result;
  }
  template <class T>
  static async::Task<void> store(async::Task<T> task, std::optional<T>& result) {
    result = co_await std::move(task);
  }

  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeWebViewFactory webViews;
  support::FakeCookieStore cookies;
  support::FakeHttpClient http;
  support::FakeDockTile dockTile;
  support::FakeSleepMonitor sleepMonitor;
  support::FakeNotificationCenter center;
  NotificationManager notifications{center};
  std::vector<std::string> opened;
  std::vector<std::string> methods;
  std::map<std::string, std::string> answers{
      {"Email/get", R"({"state":"s1","list":[]})"},
      {"Email/changes", R"({"newState":"s2","created":[]})"},
      {"Mailbox/get", R"({"list":[{"id":"in","role":"inbox","name":"Inbox","unreadEmails":7}]})"}};
  std::function<std::optional<platform::HttpResult<platform::HttpResponse>>(const platform::HttpRequest&)>
      onRequest;
  boost::json::value token = "secret-token";
  support::FakeWebView* page = nullptr;
  std::optional<JMAPSession> session;
};

} // namespace ondrel::jmap
