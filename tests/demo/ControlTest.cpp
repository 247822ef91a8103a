#include "ServiceFixture.h"

#include <chrono>

namespace ondrel::demo {

class ControlTest : public ServiceFixture {
 protected:
  Answer fail(const std::string& fault) { return order("fail", fault); }
};

TEST_F(ControlTest, GoesWrongForTheOrderedPathAndCountOldestFirst) {
  fail(R"({"path": "/mail", "count": 2, "status": 503, "body": "{\"x\""})");
  fail(R"({"path": "/", "kind": "close"})");
  EXPECT_EQ(get("/mail/Inbox/").status, 503U);
  EXPECT_EQ(get("/app/app.css").status, 0U);
  EXPECT_EQ(get("/app/app.css").status, 200U);
  EXPECT_EQ(get("/mail/long").body, "{\"x\"");
  EXPECT_EQ(get("/mail/long").status, 200U);

  fail(R"({"method": "Email/get", "type": "serverUnavailable"})");
  EXPECT_EQ(call("Email/get", R"({"ids": []})").at(1).at("type"), "serverUnavailable");
  EXPECT_EQ(call("Email/get", R"({"ids": []})").at(0), "Email/get");
}

TEST_F(ControlTest, AnswersLateWithoutHoldingUpOthers) {
  fail(R"({"path": "/mail", "kind": "delay", "milliseconds": 60})");
  fail(R"({"path": "/settings/", "status": 500, "milliseconds": 30})");
  const auto start = std::chrono::steady_clock::now();
  auto slow = ask("GET", "/mail/Inbox/");
  auto refused = ask("GET", "/settings/general");
  EXPECT_EQ(get("/app/app.css").status, 200U);
  EXPECT_EQ(refused.answer().status, 500U);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
  EXPECT_EQ(slow.answer().status, 200U);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

TEST_F(ControlTest, KeepsSilentUntilReset) {
  fail(R"({"path": "/", "kind": "silence"})");
  auto silent = ask("GET", "/mail/Inbox/");
  while (!asked("requests").at("localhost").as_object().contains("/mail/Inbox/"))
    silent.hasMore();
  EXPECT_EQ(get("/mail/Inbox/").status, 200U);
  EXPECT_FALSE(silent.hasMore());
  order("reset");
  EXPECT_EQ(silent.answer().status, 0U);
}

TEST_F(ControlTest, ForgetsAHeldRequestWhoseClientHasGone) {
  fail(R"({"path": "/data/send", "kind": "delay", "milliseconds": 30})");
  auto given = ask("POST", "/data/send", cookie_, R"({"to": ["a@b.example"], "subject": "x"})");
  while (!asked("requests").at("localhost").as_object().contains("/data/send"))
    given.hasMore();
  given.close();
  fail(R"({"path": "/mail", "kind": "delay", "milliseconds": 60})");
  EXPECT_EQ(get("/mail/Inbox/").status, 200U) << "answered after the abandoned one came due";
  EXPECT_NE(data("list?mailbox=Sent").at("rows").at(0).at("subject"), "x") << "it never arrived";
}

TEST_F(ControlTest, RefusesWebPagesAndNonsense) {
  EXPECT_EQ(ask("POST", "/control/sign-out", "Origin: http://localhost\r\n").answer().status, 403U);
  EXPECT_EQ(get("/control/requests", "", "rebound.example").status, 403U);
  EXPECT_EQ(get("/control/sign-out").status, 404U);
  const std::pair<const char*, const char*> nonsense[] = {
      {"fail", "[]"},
      {"fail", R"({"path": "mail"})"},
      {"fail", R"({"path": "/", "count": 0})"},
      {"fail", R"({"path": "/", "kind": "explode"})"},
      {"fail", R"({"path": "/", "status": 99})"},
      {"fail", R"({"path": "/", "kind": "delay", "milliseconds": -1})"},
      {"stream", R"({"action": "explode"})"},
      {"deliver", R"({"mailbox": "none"})"},
      {"deliver", R"({"count": 0})"},
      {"deliver", R"({"threadId": "T0"})"},
  };
  for (const auto& [name, body] : nonsense)
    EXPECT_EQ(order(name, body).status, 400U) << body;
  EXPECT_EQ(page("/mail/Inbox/").status, 200U) << "none of it was taken as an order";
}

TEST_F(ControlTest, RemembersWhatWasAskedButNotTheToken) {
  post(request(R"([["Mailbox/get", {"accountId": "u12345678"}, "1"]])"));
  get("/source/M1", token_, "usercontent.localhost");
  get("/source/M1", "", "usercontent.localhost");
  EXPECT_EQ(asked("requests").at("usercontent.localhost").at("/source/M1"), 2);
  const auto entries = asked("jmap-requests").as_array();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_THAT(text(entries[0].at("request").at("methodCalls")), HasSubstr("Mailbox/get"));
  EXPECT_EQ(entries[1].at("hasAuthorization"), true);
  EXPECT_FALSE(text(entries).contains(token_.substr(token_.find("demo-"), 20)));
  order("reset");
  EXPECT_EQ(text(asked("jmap-requests")), "[]");
}

TEST_F(ControlTest, DeliversAsOrdered) {
  const auto id =
      deliver(R"({"subject": "Just in", "text": "<b>isn't bold</b>", "fromName": "Kofi"})").at("emailId");
  const auto row = data("list?mailbox=Inbox&limit=1").at("rows").at(0);
  EXPECT_EQ(row.at("emailId"), id);
  EXPECT_EQ(row.at("isUnread"), true);
  EXPECT_EQ(row.at("preview"), "<b>isn't bold</b>") << "text, and no markup";
  const auto more =
      deliver(R"({"threadId": "T4", "count": 2, "from": null, "subject": null, "mailbox": "Spam"})");
  EXPECT_EQ(more.at("emailIds").as_array().size(), 2U);
  EXPECT_EQ(data("thread?id=T4").at("messages").as_array().size(), 3U);
  EXPECT_EQ(
      email(std::string(more.at("emailId").as_string()), R"(["from", "subject", "mailboxIds", "keywords"])"),
      R"({"id":)" + text(more.at("emailId")) +
          R"(,"mailboxIds":{"junk":true},"keywords":{},"from":null,"subject":null})");
}

} // namespace ondrel::demo
