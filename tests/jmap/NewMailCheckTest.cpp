#include "MailWorld.h"

#include "jmap/NewMailCheck.h"

namespace ondrel::jmap {
namespace {

class NewMailCheckTest : public MailTest {
 protected:
  NewMailCheckTest() {
    answerNext({R"({"state":"s1","list":[]})"});
    run(check.checkAndNotifyNewEmails()); // without a state to start from it seeds
    support::LogCapture::lines().clear();
  }
  async::Task<Result<void>> notify(std::vector<std::string> ids) {
    told.push_back(std::move(ids));
    stateWhenTold = check.lastEmailState().value_or("none");
    co_return outcome;
  }

  std::vector<Lines> told;
  std::string stateWhenTold;
  Result<void> outcome;
  NewMailCheck check{client, [this](std::vector<std::string> ids) { return notify(std::move(ids)); }};
};

TEST_F(NewMailCheckTest, AsksForChangesSinceTheLastState) {
  answerNext({R"({"newState":"s2","created":["M1","M2"]})", R"({"newState":"s3","created":[]})"});
  run(check.checkAndNotifyNewEmails());
  EXPECT_EQ(told, std::vector<Lines>({{"M1", "M2"}}));
  EXPECT_EQ(stateWhenTold, "s2") << "a message that can't be told is not tried again";
  run(check.checkAndNotifyNewEmails());
  EXPECT_EQ(told.size(), 1U);
  EXPECT_EQ(check.lastEmailState(), "s3");
  expectCalls(0, R"([["Email/get", {"accountId": "u123", "ids": []}, "s0"]])");
  expectCalls(1, R"([["Email/changes", {"accountId": "u123", "sinceState": "s1", "maxChanges": 50}, "c0"]])");
  expectCalls(2, R"([["Email/changes", {"accountId": "u123", "sinceState": "s2", "maxChanges": 50}, "c0"]])");
}

TEST_F(NewMailCheckTest, AFailureSeedsAnew) {
  for (const auto* changes :
       {"[]", R"({"methodResponses":[]})", R"({"methodResponses":["error"]})", R"({"methodResponses":[[]]})",
        R"({"methodResponses":[["error",{"newState":"x","created":[]},"c0"]]})",
        R"({"methodResponses":[["x",{"newState":5,"created":[]}]]})",
        R"({"methodResponses":[["x",{"newState":"s2","created":["e1",1]}]]})"}) {
    client.answerNext(changes);
    answerNext({R"({"state":"s9"})"});
    run(check.checkAndNotifyNewEmails());
    EXPECT_EQ(check.lastEmailState(), "s9") << changes;
  }
  EXPECT_EQ(told.size(), 0U);
  outcome = std::unexpected(JMAPError::notAuthenticated());
  answerNext({R"({"newState":"s2","created":["M1"]})", R"({"state":null})"});
  run(check.checkAndNotifyNewEmails());
  EXPECT_EQ(check.lastEmailState(), std::nullopt);
}

TEST_F(NewMailCheckTest, ASeedingThatFailsKnowsNothingAndACancelledOneChangesNothing) {
  client.delay = std::chrono::seconds(1);
  client.failNext(JMAPError::badResponse());
  auto seeding = scope.spawn(check.seedEmailState());
  loop.advance(std::chrono::milliseconds(500));
  seeding.cancel();
  loop.advance(std::chrono::minutes(1));
  EXPECT_EQ(check.lastEmailState(), "s1") << "the connection that replaces it goes on from there";
  EXPECT_EQ(log.lines(), Lines{});

  client.failNext(JMAPError::badResponse());
  run(check.seedEmailState());
  EXPECT_EQ(check.lastEmailState(), std::nullopt);
}

} // namespace
} // namespace ondrel::jmap
