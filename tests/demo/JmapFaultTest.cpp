#include "JmapFixture.h"

#include "demo/MethodFaults.h"

#include <gmock/gmock.h>

namespace ondrel::demo {

namespace json = boost::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class JmapFaultTest : public JmapFixture {
 protected:
  static constexpr const char* echo = R"([["Core/echo", {"text": "some words to be cut in two"}, "0"]])";

  Answer failed(const std::string& fault) {
    EXPECT_EQ(order("fail", R"({"path": "/jmap/api/", )" + fault + "}").status, 200u) << fault;
    auto answer = post(request(echo));
    EXPECT_EQ(json::parse(post(request(echo)).body).at("sessionState"), "session-1") << "once only";
    return answer;
  }
};

TEST_F(JmapFaultTest, GoesWrongInEveryWay) {
  const auto whole = post(request(echo)).body;
  for (const auto status : {401u, 403u, 404u, 429u, 500u})
    EXPECT_EQ(failed(R"("kind": "status", "status": )" + std::to_string(status)).status, status);
  const auto empty = failed(R"("kind": "empty")");
  EXPECT_EQ(empty.status, 200u);
  EXPECT_EQ(empty.body, "");
  const auto html = failed(R"("kind": "html")");
  EXPECT_EQ(html.status, 200u);
  EXPECT_EQ(html.headers.at("content-type"), "text/html; charset=utf-8");
  EXPECT_EQ(failed(R"("kind": "body", "body": "{\"methodResponses\": 7}", "status": 201)").body,
            R"({"methodResponses": 7})");
  EXPECT_FALSE(g_utf8_validate(failed(R"("kind": "invalid-utf8")").body.c_str(), -1, nullptr));
  EXPECT_EQ(failed(R"("kind": "truncated")").body, whole.substr(0, whole.size() / 2));
  const auto cut = failed(R"("kind": "cut")");
  EXPECT_FALSE(cut.error.empty()) << cut.body;
  const auto huge = failed(R"("kind": "huge")");
  EXPECT_GE(huge.body.size(), 50'000'000u);
  EXPECT_THAT(huge.body, StartsWith(R"({"methodResponses":[["Email/get")"));
  EXPECT_EQ(huge.body.substr(huge.body.size() - 10), R"(}]},"0"]]})");
  const auto moved = failed(R"("kind": "redirect", "location": "http://usercontent.localhost:1/x")");
  EXPECT_EQ(moved.status, 307u);
  EXPECT_EQ(moved.headers.at("location"), "http://usercontent.localhost:1/x");

  for (const char* nonsense : {R"("kind": "redirect")", R"("kind": "redirect", "location": "ftp://a")",
                               R"("kind": "redirect", "location": "http://a\r\nB: c")"}) {
    EXPECT_EQ(order("fail", std::string(R"({"path": "/", )") + nonsense + "}").status, 400u) << nonsense;
  }
}

TEST_F(JmapFaultTest, EndsSingleMethodsWithAnOrderedError) {
  order("fail-method", R"({"method": "Mailbox/get", "type": "serverUnavailable", "count": 2})");
  order("fail-method", R"({"method": "Core/echo"})");
  const auto responses = calls(R"([["Core/echo", {}, "a"], ["Core/echo", {}, "b"],
                                   ["Mailbox/get", {"accountId": "u12345678"}, "c"]])");
  EXPECT_EQ(responses[0].at(1).at("type"), "serverFail");
  EXPECT_EQ(responses[1].at(0), "Core/echo");
  EXPECT_EQ(responses[2].at(1).at("type"), "serverUnavailable");
  EXPECT_EQ(error("Mailbox/get", "{}"), "serverUnavailable");
  EXPECT_EQ(error("Mailbox/get", "{}"), "no error");
  EXPECT_EQ(order("fail-method", R"({"count": 1})").status, 400u);
  order("fail-method", R"({"method": "Mailbox/get"})");
  order("reset");
  EXPECT_EQ(error("Mailbox/get", "{}"), "no error");
}

TEST_F(JmapFaultTest, RemembersWhatWasAsked) {
  post(request(R"([["Core/echo", {"a": 1}, "0"], ["Mailbox/get", {}, "1"]])"));
  fetch({web("/jmap/session"), "GET", {{"Cookie", "a=b"}}});
  fetch({web("/blob/x/y", "usercontent.localhost"), "GET", {{"Authorization", "Bearer " + token_}}});
  fetch({web("/blob/x/y", "usercontent.localhost")});
  const auto answer = fetch({control("jmap-requests")});
  EXPECT_THAT(answer.body, Not(HasSubstr(token_)));
  const auto entries = json::parse(answer.body).as_array();
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(text(entries[0].at("calls")), R"(["Core/echo","Mailbox/get"])");
  EXPECT_EQ(entries[0].at("request").at("methodCalls").at(0).at(1).at("a"), 1);
  EXPECT_EQ(entries[0].at("hasAuthorization"), true);
  EXPECT_EQ(entries[0].at("hasCookie"), false);
  EXPECT_EQ(entries[1].at("path"), "/jmap/session");
  EXPECT_EQ(entries[1].at("hasAuthorization"), false);
  EXPECT_EQ(entries[1].at("hasCookie"), true);
  EXPECT_EQ(entries[2].at("host"), "usercontent.localhost");
  order("reset");
  EXPECT_EQ(fetch({control("jmap-requests")}).body, "[]");
}

TEST_F(JmapFaultTest, DeliversAsOrdered) {
  const auto both = deliver(R"({"mailbox": ["Archive", "junk"], "attachments": 4, "threadId": "T1"})");
  EXPECT_EQ(both.at("threadId"), "T1");
  const auto got = answer("Email/get", R"({"ids": [)" + text(both.at("emailId")) +
                                           R"(], "properties": ["mailboxIds", "attachments"]})")
                       .at("list")
                       .at(0);
  EXPECT_EQ(text(got.at("mailboxIds")), R"({"archive":true,"junk":true})");
  EXPECT_EQ(got.at("attachments").as_array().size(), 4u);
  for (const char* nonsense : {R"({"mailbox": "none"})", R"({"mailbox": []})", R"({"mailbox": 1})",
                               R"({"count": 0})", R"({"attachments": 101})", R"({"receivedAt": "now"})"}) {
    EXPECT_EQ(order("deliver", nonsense).status, 400u) << nonsense;
  }
}

} // namespace ondrel::demo
