#include "MailWorld.h"
#include "support/JsonMutations.h"

#include "jmap/newmail/NewMailNotifier.h"
#include "support/FakeNotificationCenter.h"

#include <functional>

// What every operation owes to an answer of any shape.
namespace ondrel::jmap {
namespace {

namespace json = boost::json;

// What an operation ended with: nothing for a value.
using Outcome = std::optional<JMAPError>;

struct Operation {
  std::string name;
  std::function<Outcome(MailWorld&)> run;
};

template <class T, class... Parameters, class... Arguments>
Operation query(std::string name, async::Task<Result<T>> (MailQueries::*method)(Parameters...),
                Arguments... arguments) {
  return {std::move(name), [=](MailWorld& world) {
            const Result<T> result = world.run((world.queries.*method)(arguments...));
            return result ? std::nullopt : std::optional(result.error());
          }};
}

Outcome addToMailbox(MailWorld& world) {
  world.run(world.queries.setMailboxMembership({"M1", "M2"}, "B1", true));
  return {};
}

Outcome notify(MailWorld& world) {
  support::FakeNotificationCenter center;
  NotificationManager manager(center);
  NewMailNotifier notifier(world.client, world.queries, manager, world.settings, [](const auto&) {}, {});
  const auto result = world.run(notifier.newMailAmong({"M1"}));
  return result ? std::nullopt : std::optional(result.error());
}

using Q = MailQueries;
const Operation operations[] = {
    query("fetchAttachments", &Q::fetchAttachments, 0, 30),
    query("emailInfo", &Q::emailInfo, "M1"),
    query("threadEmails", &Q::threadEmails, "T1"),
    query("findMailboxId", &Q::findMailboxId, "inbox"),
    query("findEmailId", &Q::findEmailId, "1@x"),
    query("findMailboxNameAndThreadId", &Q::findMailboxNameAndThreadId, "M1"),
    query("highlightExportInfo", &Q::highlightExportInfo, std::vector<std::string>{"1@x"},
          [](std::size_t) {}),
    query("fetchInLabelsMode", &Q::fetchInLabelsMode),
    query("inboxUnreadCount", &Q::inboxUnreadCount),
    query("fetchInboxMailboxId", &Q::fetchInboxMailboxId),
    query("fetchTrashMailboxId", &Q::fetchTrashMailboxId),
    query("fetchJunkMailboxId", &Q::fetchJunkMailboxId),
    {"setMailboxMembership", addToMailbox},
    {"notifyForEmails", notify},
};

class BrokenReplies : public testing::TestWithParam<Operation> {
 protected:
  // Runs it with the replies to one method exchanged. What it asked and logged is left in the members.
  Outcome runWith(const std::string& method, const std::string& body) {
    auto replies = goodReplies();
    replies[method] = body;
    MailWorld world(replies);
    world.client.session->primaryAccounts["https://www.example.com/dev/user"] = "d7";
    const auto ended = GetParam().run(world);
    asked.clear();
    for (const auto& sent : world.client.sent)
      asked.emplace_back(sent.body.at("methodCalls").at(0).at(0).as_string());
    logged = world.log.lines();
    return ended;
  }

  std::vector<std::string> asked;
  std::vector<std::string> logged;
};

TEST_P(BrokenReplies, AnyNodeOfAnotherShapeGivesAValueOrALoggedError) {
  const auto& [name, run] = GetParam();
  EXPECT_FALSE(runWith("none", "")) << "the good ones are good";
  int errors = 0;
  for (const auto& method : std::vector(asked))
    support::JsonMutations(json::parse(goodReplies()[method])).forEach([&](const json::value& mutated) {
      const auto body = json::serialize(mutated);
      const auto ended = runWith(method, body);
      if (!ended)
        return;
      ++errors;
      EXPECT_EQ(*ended, JMAPError::badResponse()) << body;
      ASSERT_EQ(logged.size(), 1u) << body;
      EXPECT_TRUE(logged[0].starts_with("error network: " + name + ": ")) << logged[0];
    });
  const bool neverFails =
      name == "setMailboxMembership" || name == "highlightExportInfo" || name == "notifyForEmails";
  EXPECT_EQ(errors > 20, !neverFails) << errors;
}

TEST_P(BrokenReplies, AnAccountWithoutMailIsAskedNothing) {
  const auto& [name, run] = GetParam();
  MailWorld world;
  world.client.session->primaryAccounts.clear();
  const bool quiet =
      name == "setMailboxMembership" || name == "inboxUnreadCount" || name == "notifyForEmails";
  EXPECT_EQ(run(world), quiet ? std::nullopt : std::optional(JMAPError::badResponse()));
  EXPECT_EQ(world.client.sent.size(), 0u);
  EXPECT_EQ(world.client.tokenReads, 0);
  if (name != "setMailboxMembership" && name != "findMailboxNameAndThreadId")
    EXPECT_TRUE(world.log.anyStartsWith("error network: " + name + ": no "));
}

INSTANTIATE_TEST_SUITE_P(Operations, BrokenReplies, testing::ValuesIn(operations),
                         [](const auto& info) { return info.param.name; });

TEST(DeepReplies, AreRefused) {
  const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_TRUE(JMAPReply::of(nested(100)).json) << "a message of many parts";
  for (const std::size_t depth : {200, 1000000})
    EXPECT_EQ(JMAPReply::of(nested(depth)).json.error().kind, JMAPError::Kind::malformed) << depth;
}

} // namespace
} // namespace ondrel::jmap
