// What the program's own tests can't see: that the service goes wrong as it was told, and refuses what the
// real one refuses. A fault that is never carried out makes tests that can't fail.
#include "demo/Service.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/Loopback.h"

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>

namespace ondrel::demo {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// The service runs on this thread, and each of its clients on one of its own.
class ServiceTest : public testing::Test {
 protected:
  using Answer = std::future<std::string>;

  void SetUp() override {
    const auto listening = service.listen(0, 0);
    ASSERT_TRUE(listening) << listening.error();
    const auto head = get(ask("POST", "/sign-in"));
    const auto start = head.find("Set-Cookie: ") + 12;
    cookie = "Cookie: " + head.substr(start, head.find(';', start) - start) + "\r\n";
  }

  // `headers` are whole lines.
  Answer ask(const std::string& method, const std::string& path, const std::string& headers = "",
             const std::string& body = "", const std::string& host = "localhost") const {
    const auto port = path.starts_with("/control/") ? service.controlPort() : service.webPort();
    return std::async(std::launch::async, support::answerAt, port,
                      fmt::format("{} {} HTTP/1.0\r\nHost: {}:{}\r\n{}Content-Length: {}\r\n\r\n{}", method,
                                  path, host, port, headers, body.size(), body));
  }
  static bool isThere(const Answer& answer) {
    return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }
  // All of the answer; empty when the connection has ended without one.
  static std::string get(Answer answer) {
    while (!isThere(answer))
      g_main_context_iteration(nullptr, FALSE);
    return answer.get();
  }
  std::string page(const std::string& path) { return get(ask("GET", path, cookie)); }
  std::string order(const std::string& name, const std::string& body = "{}") {
    return get(ask("POST", "/control/" + name, "", body));
  }
  std::string jmap(const std::string& headers) {
    return get(ask("POST", "/jmap/api/", headers + "Content-Type: application/json\r\n",
                   R"({"using": ["urn:ietf:params:jmap:core", "urn:ietf:params:jmap:mail"], "methodCalls":
                       [["Email/get", {"accountId": "u12345678", "ids": []}, "0"]]})"));
  }
  std::string token() {
    const auto answer = order("token");
    const auto start = answer.rfind(":\"") + 2;
    return "Authorization: Bearer " + answer.substr(start, answer.rfind('"') - start) + "\r\n";
  }

  glib::GlibEventLoop loop;
  Service service;
  std::string cookie;
};

TEST_F(ServiceTest, GoesWrongAsOrderedOldestFirstAndHoldsUpNobodyElse) {
  order("fail", R"({"path": "/mail", "count": 2, "status": 503, "body": "first"})");
  order("fail", R"({"path": "/mail", "kind": "close"})");
  order("fail", R"({"path": "/settings", "kind": "delay", "milliseconds": 60})");
  order("fail", R"({"path": "/settings", "kind": "silence"})");
  const auto start = std::chrono::steady_clock::now();
  auto slow = ask("GET", "/settings/general", cookie);
  EXPECT_THAT(page("/mail/Inbox/"), testing::EndsWith("first"));
  EXPECT_THAT(page("/mail/long"), StartsWith("HTTP/1.0 503 "));
  EXPECT_EQ(page("/mail/long"), "");
  EXPECT_THAT(page("/mail/long"), StartsWith("HTTP/1.0 200 "));
  EXPECT_THAT(get(std::move(slow)), StartsWith("HTTP/1.0 200 "));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));

  auto silent = ask("GET", "/settings/general", cookie);
  while (!page("/control/requests").contains("general\":2"))
    EXPECT_FALSE(isThere(silent));
  order("reset");
  EXPECT_EQ(get(std::move(silent)), "");

  order("fail", R"({"method": "Email/get", "type": "serverUnavailable"})");
  EXPECT_THAT(jmap(token()), HasSubstr("serverUnavailable"));
  EXPECT_THAT(jmap(token()), HasSubstr("\"list\":[]"));
}

TEST_F(ServiceTest, LetsNobodyInWithoutACookieOrTheTokenOfNow) {
  for (const auto* path : {"/", "/mail/Inbox/?u=demo", "/settings/general"})
    EXPECT_THAT(get(ask("GET", path)), HasSubstr("id=\"sign-in\"")) << path;
  EXPECT_THAT(get(ask("GET", "/data/mailboxes")), StartsWith("HTTP/1.0 401 "));
  for (const auto& headers : {std::string(), std::string("Authorization: Bearer other\r\n"), cookie})
    EXPECT_THAT(jmap(headers), StartsWith("HTTP/1.0 401 ")) << headers;
  for (const auto* name : {"expire-token", "sign-out"}) {
    const auto old = token();
    EXPECT_THAT(jmap(old), StartsWith("HTTP/1.0 200 "));
    order(name);
    EXPECT_THAT(jmap(old), StartsWith("HTTP/1.0 401 ")) << name;
    EXPECT_FALSE(page("/control/jmap-requests").contains(old.substr(22, 20))) << "nor is it kept";
  }
  EXPECT_THAT(page("/mail/Inbox/"), HasSubstr("id=\"sign-in\""));
}

TEST_F(ServiceTest, TakesOrdersFromNoPageAndNoNonsense) {
  EXPECT_THAT(get(ask("POST", "/control/sign-out", "Origin: http://localhost\r\n")),
              StartsWith("HTTP/1.0 403 "));
  EXPECT_THAT(get(ask("GET", "/control/requests", "", "", "rebound.example")), StartsWith("HTTP/1.0 403 "));
  EXPECT_THAT(get(ask("GET", "/", "", "", "elsewhere.example")), StartsWith("HTTP/1.0 421 "));
  for (const auto* fault : {"[]", R"({"path": "mail"})", R"({"path": "/", "count": 0})",
                            R"({"path": "/", "kind": "explode"})", R"({"path": "/", "status": 99})"})
    EXPECT_THAT(order("fail", fault), StartsWith("HTTP/1.0 400 ")) << fault;
  EXPECT_THAT(page("/mail/Inbox/"), StartsWith("HTTP/1.0 200 ")) << "none of it was taken as an order";
  EXPECT_THAT(get(ask("GET", "/app/%2e%2e/attachments/notes.txt")), StartsWith("HTTP/1.0 404 "));
  for (const auto* next : {"next=https%3A%2F%2Fevil.example%2F", "next=%2F%2Fevil.example%2Fmail%2F",
                           "next=%2Fmail%2F%0D%0ASet-Cookie%3A%20a%3Db"})
    EXPECT_THAT(get(ask("POST", "/sign-in", "", next)), HasSubstr("\nLocation: /mail/Inbox/?u=demo\r\n"));
}

} // namespace
} // namespace ondrel::demo
