#include "MailWorld.h"

#include "jmap/NewMailCheck.h"

namespace ondrel::jmap {
namespace {

class NewMailCheckTest : public MailTest {
 protected:
  NewMailCheckTest() {
    client.answerNext(reply({R"({"state":"s1","list":[]})"}));
    run(check.seedEmailState());
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
  client.answerNext(reply({R"({"newState":"s2","created":["M1","M2"]})"}));
  run(check.checkAndNotifyNewEmails());
  EXPECT_EQ(told, std::vector<Lines>({{"M1", "M2"}}));
  EXPECT_EQ(stateWhenTold, "s2") << "a message that can't be told is not tried again";
  client.answerNext(reply({R"({"newState":"s3","created":[]})"}));
  run(check.checkAndNotifyNewEmails());
  EXPECT_EQ(told.size(), 1U);
  EXPECT_EQ(check.lastEmailState(), "s3");
  expectCalls(0, R"([["Email/get", {"accountId": "u123", "ids": []}, "s0"]])");
  expectCalls(1, R"([["Email/changes", {"accountId": "u123", "sinceState": "s1", "maxChanges": 50}, "c0"]])");
  expectCalls(2, R"([["Email/changes", {"accountId": "u123", "sinceState": "s2", "maxChanges": 50}, "c0"]])");
  EXPECT_EQ(log.lines(), (Lines{"info network: checkAndNotifyNewEmails: 2 new email(s) since s1",
                                "info network: checkAndNotifyNewEmails: no new emails since s2"}));
}

TEST_F(NewMailCheckTest, AFailureSeedsAnew) {
  const std::string malformed = "error network: fetchEmailChanges: malformed Email/changes response";
  const std::string returnedError =
      "error network: fetchEmailChanges: JMAP returned error — state likely invalidated";
  const std::string missing =
      "error network: fetchEmailChanges: missing newState or created in Email/changes response";
  const std::pair<const char*, std::string> cases[] = {
      {"[]", malformed},
      {"{}", malformed},
      {R"({"methodResponses":[]})", malformed},
      {R"({"methodResponses":["error"]})", malformed},
      {R"({"methodResponses":[["error",{"type":"cannotCalculateChanges"},"c0"]]})", returnedError},
      {R"({"methodResponses":[["error",{"newState":"x","created":[]},"c0"]]})", returnedError},
      {R"({"methodResponses":[[]]})", missing},
      {R"({"methodResponses":[["x",{"newState":"s2","created":[1]}]]})", missing}};
  for (const auto& [answer, logged] : cases) {
    support::LogCapture::lines().clear();
    client.answerNext(answer);
    client.answerNext(reply({R"({"state":"s9"})"}));
    run(check.checkAndNotifyNewEmails());
    EXPECT_EQ(check.lastEmailState(), "s9") << answer;
    EXPECT_EQ(log.lines(),
              (Lines{logged, "error network: Failed to fetch email changes: Unexpected JMAP response format.",
                     "error network: checkAndNotifyNewEmails: re-seeded lastEmailState after error — any "
                     "emails in this window were not notified for"}))
        << answer;
  }
  outcome = std::unexpected(JMAPError::notAuthenticated());
  client.answerNext(reply({R"({"newState":"s2","created":["M1"]})"}));
  client.failNext(JMAPError::badResponse());
  run(check.checkAndNotifyNewEmails());
  EXPECT_EQ(check.lastEmailState(), std::nullopt);
  EXPECT_EQ(told.size(), 1U);
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
  client.session->primaryAccounts.clear();
  run(check.seedEmailState());
  EXPECT_EQ(log.lines(), (Lines{"error network: seedEmailState: failed to fetch initial email state",
                                "error network: fetchCurrentEmailState: no mail account ID in JMAP session",
                                "error network: seedEmailState: failed to fetch initial email state"}));
}

} // namespace
} // namespace ondrel::jmap
