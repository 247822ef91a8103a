#include "ServiceFixture.h"

#include "demo/FaultPlan.h"

namespace ondrel::demo {

class ControlTest : public ServiceFixture {};

TEST_F(ControlTest, AnswersWithAStatusForTheOrderedCountAndPathOnly) {
  ASSERT_EQ(order("fail", R"({"path": "/mail", "count": 2, "kind": "status", "status": 503})").status, 200u);
  EXPECT_EQ(fetch({web("/settings/general")}).status, 200u);
  EXPECT_EQ(fetch({web("/mail/Inbox/")}).status, 503u);
  EXPECT_EQ(fetch({web("/mail/long")}).status, 503u);
  EXPECT_EQ(fetch({web("/mail/Inbox/")}).status, 200u);
}

TEST_F(ControlTest, ClosesTheConnection) {
  ASSERT_EQ(order("fail", R"({"path": "/app/", "kind": "close"})").status, 200u);
  const auto answer = fetch({web("/app/app.css")});
  EXPECT_EQ(answer.status, 0u);
  EXPECT_FALSE(answer.error.empty());
  EXPECT_EQ(fetch({web("/app/app.css")}).status, 200u);
}

TEST_F(ControlTest, KeepsSilentUntilReset) {
  ASSERT_EQ(order("fail", R"({"path": "/", "kind": "silence"})").status, 200u);
  Call silent({web("/mail/Inbox/")});
  while (boost::json::parse(fetch({control("requests")}).body).as_object().empty()) {
  }
  EXPECT_EQ(fetch({web("/mail/Inbox/")}).status, 200u);
  EXPECT_FALSE(silent.isDone());
  ASSERT_EQ(order("reset").status, 200u);
  EXPECT_FALSE(silent.wait().error.empty());
}

TEST_F(ControlTest, DelaysAnAnswerWithoutHoldingUpOthers) {
  ASSERT_EQ(order("fail", R"({"path": "/mail", "kind": "delay", "milliseconds": 60})").status, 200u);
  const auto start = g_get_monotonic_time();
  Call slow({web("/mail/Inbox/")});
  EXPECT_EQ(fetch({web("/app/app.css")}).status, 200u);
  EXPECT_EQ(slow.wait().status, 200u);
  EXPECT_GE(g_get_monotonic_time() - start, 60'000);
}

TEST_F(ControlTest, ForgetsAHeldRequestWhoseClientHasGone) {
  const auto cookie = signIn();
  ASSERT_EQ(order("fail", R"({"path": "/data", "kind": "delay", "milliseconds": 30})").status, 200u);
  {
    Call given(
        {web("/data/send"), "POST", {{"Cookie", cookie}}, R"({"to": ["a@b.example"], "subject": "x"})"});
    while (!fetch({control("requests")}).body.contains("/data/send")) {
    }
  }
  ASSERT_EQ(order("fail", R"({"path": "/mail", "kind": "delay", "milliseconds": 60})").status, 200u);
  EXPECT_EQ(fetch({web("/mail/Inbox/")}).status, 200u) << "answered after the abandoned one came due";
  EXPECT_NE(data("list?mailbox=Sent", cookie).at("rows").at(0).at("subject"), "x") << "it never arrived";
}

TEST_F(ControlTest, RefusesWebPagesAndNonsense) {
  EXPECT_EQ(fetch({control("sign-out"), "POST", {{"Origin", web("")}}, "{}"}).status, 403u);
  EXPECT_EQ(fetch({control("requests"), "GET", {{"Host", "rebound.example"}}}).status, 403u);
  EXPECT_EQ(fetch({control("sign-out")}).status, 405u);
  EXPECT_EQ(fetch({web("/control/sign-out"), "POST", {}, "{}"}).status, 404u);
  for (const char* nonsense :
       {"", "[]", R"({"count": 1})", R"({"path": "mail"})", R"({"path": "/", "count": 0})",
        R"({"path": "/", "kind": "explode"})", R"({"path": "/", "status": 99})",
        R"({"path": "/", "kind": "delay", "milliseconds": -1})"}) {
    EXPECT_EQ(order("fail", nonsense).status, 400u) << nonsense;
  }
  EXPECT_EQ(fetch({web("/mail/Inbox/")}).status, 200u) << "none of it was taken as an order";
}

TEST_F(ControlTest, CountsRequestsByHostAndPath) {
  fetch({web("/mail/Inbox/?u=demo")});
  fetch({web("/mail/Inbox/?u=other")});
  fetch({web("/source/M1", "usercontent.localhost")});
  const auto counts = boost::json::parse(fetch({control("requests")}).body);
  EXPECT_EQ(counts.at("localhost").at("/mail/Inbox/"), 2);
  EXPECT_EQ(counts.at("usercontent.localhost").at("/source/M1"), 1);
}

TEST_F(ControlTest, DeliversToTheTopOfTheInbox) {
  const auto delivered = boost::json::parse(
      order("deliver", R"({"subject": "Just in", "text": "<b>not bold</b>", "fromName": "Kofi"})").body);
  const auto cookie = signIn();
  const auto row = data("list?mailbox=Inbox&limit=1", cookie).at("rows").at(0);
  EXPECT_EQ(row.at("emailId"), delivered.at("emailId"));
  EXPECT_EQ(row.at("isUnread"), true);
  const std::string threadId(row.at("threadId").as_string());
  EXPECT_EQ(data("thread?id=" + threadId, cookie).at("messages").at(0).at("html"),
            "<p>&lt;b&gt;not bold&lt;/b&gt;</p>");

  order("deliver", R"({"threadId": "T4", "text": "One more."})");
  EXPECT_EQ(data("thread?id=T4", cookie).at("messages").as_array().size(), 2u);
}

TEST(FaultPlanTest, UsesUpTheOldestOrderThatFits) {
  FaultPlan plan;
  plan.add("/jmap", 1, {.status = 401});
  plan.add("/", 2, {.status = 500});
  plan.add("/never", 0, {.status = 418});
  EXPECT_EQ(plan.take("/jmap/session")->status, 401u);
  EXPECT_EQ(plan.take("/jmap/session")->status, 500u);
  EXPECT_EQ(plan.take("/never")->status, 500u);
  EXPECT_FALSE(plan.take("/never"));
}

} // namespace ondrel::demo
