#include "MailWorld.h"
#include "support/JsonMutations.h"

#include "jmap/NewMailNotifier.h"
#include "support/FakeNotificationCenter.h"

#include <functional>

namespace ondrel::jmap {
namespace {

namespace json = boost::json;

// What an operation ended with: nothing for a value.
using Outcome = std::optional<JMAPError>;

template <class T>
Outcome outcome(const Result<T>& result) {
  return result ? std::nullopt : std::optional(result.error());
}

struct Operation {
  const char* name;
  std::vector<std::string> replies; // to its requests in order
  std::function<Outcome(MailWorld&)> run;
};

Outcome notify(MailWorld& world) {
  support::FakeNotificationCenter center;
  NotificationManager manager(center);
  NewMailNotifier notifier(world.client, world.queries, manager, world.settings, [](const auto&) {});
  return outcome(world.run(notifier.notifyForEmails({"M1"})));
}

std::vector<Operation> operations() {
  const auto reply = [](std::initializer_list<std::string_view> arguments) {
    return support::FakeJMAPClient::reply(arguments);
  };
  const auto roles = reply({R"({"list":[{"id":"B1","role":"inbox","name":"Inbox","unreadEmails":3},
      {"id":"B2","role":"trash","name":"Bin"},{"id":"B3","role":"junk"}]})"});
  const auto place = reply({R"({"list":[{"id":"M1","mailboxIds":{"B1":true},"threadId":"T1"}]})"});
  const auto name = reply({R"({"list":[{"id":"B1","name":"Inbox"}]})"});
  return {
      {"fetchAttachments",
       {roles, reply({R"({"ids":["M1"],"total":1})",
                      R"({"list":[{"id":"M1","subject":"S","from":[{"name":"N","email":"e@x"}],
          "receivedAt":"2024-01-31T10:20:30Z","attachments":[{"blobId":"G1","name":"a","type":"t","size":1,
          "disposition":"attachment","cid":null}]}]})"})},
       [](MailWorld& w) { return outcome(w.run(w.queries.fetchAttachments(0, 30))); }},
      {"emailInfo",
       {reply({R"({"list":[{"subject":"S","messageId":["1@x"]}]})"})},
       [](MailWorld& w) { return outcome(w.run(w.queries.emailInfo("M1"))); }},
      {"threadEmails",
       {reply({R"({"list":[{"id":"T1","emailIds":["M1","M2"]}]})"}),
        reply({R"({"list":[{"id":"M1","messageId":["1@x"]}]})"})},
       [](MailWorld& w) { return outcome(w.run(w.queries.threadEmails("T1"))); }},
      {"setMailboxMembership",
       {reply({R"({"updated":{"M1":null},"notUpdated":{"M2":{"type":"x"}}})"})},
       [](MailWorld& w) {
         w.run(w.queries.setMailboxMembership({"M1", "M2"}, "B1", true));
         return Outcome();
       }},
      {"findMailboxId",
       {name},
       [](MailWorld& w) { return outcome(w.run(w.queries.findMailboxId("inbox"))); }},
      {"findEmailId",
       {reply({R"({"ids":["M1"]})"})},
       [](MailWorld& w) { return outcome(w.run(w.queries.findEmailId("1@x"))); }},
      {"findMailboxNameAndThreadId",
       {place, name},
       [](MailWorld& w) { return outcome(w.run(w.queries.findMailboxNameAndThreadId("M1"))); }},
      {"highlightExportInfo",
       {reply({R"({"ids":["M1"]})", R"({"list":[{"id":"M1","messageId":["1@x"],"subject":"S",
          "mailboxIds":{"B1":true},"threadId":"T1"}]})"}),
        name},
       [](MailWorld& w) { return outcome(w.run(w.queries.highlightExportInfo({"1@x"}))); }},
      {"fetchInLabelsMode",
       {reply({R"({"list":[{"inLabelsMode":true}]})"})},
       [](MailWorld& w) {
         w.client.session->primaryAccounts["https://www.example.com/dev/user"] = "d7";
         return outcome(w.run(w.queries.fetchInLabelsMode()));
       }},
      {"inboxUnreadCount",
       {roles},
       [](MailWorld& w) { return outcome(w.run(w.queries.inboxUnreadCount())); }},
      {"fetchInboxMailboxId",
       {roles},
       [](MailWorld& w) { return outcome(w.run(w.queries.fetchInboxMailboxId())); }},
      {"fetchTrashMailboxId",
       {roles},
       [](MailWorld& w) { return outcome(w.run(w.queries.fetchTrashMailboxId())); }},
      {"fetchJunkMailboxId",
       {roles},
       [](MailWorld& w) { return outcome(w.run(w.queries.fetchJunkMailboxId())); }},
      {"notifyForEmails",
       {reply(
            {R"({"list":[{"id":"M1","from":[{"name":"N","email":"e@x"}],"subject":"S","mailboxIds":{"B1":true}}]})"}),
        roles},
       notify},
  };
}

// Runs it with one of its replies exchanged.
void runWith(const Operation& operation, std::size_t number, const std::string& body,
             const std::function<void(const Outcome&, const std::vector<std::string>& log)>& check) {
  SCOPED_TRACE(std::string(operation.name) + ", reply " + std::to_string(number) + ": " + body);
  MailWorld world;
  for (std::size_t i = 0; i < operation.replies.size(); ++i)
    world.client.answerNext(i == number ? body : operation.replies[i]);
  const auto ended = operation.run(world);
  check(ended, world.log.lines());
}

TEST(BrokenReplies, TheGoodOnesAreGood) {
  for (const auto& operation : operations())
    runWith(operation, 0, operation.replies[0],
            [](const auto& ended, const auto& log) { EXPECT_FALSE(ended) << log.back(); });
}

TEST(BrokenReplies, AnyNodeOfAnotherShapeGivesAValueOrALoggedError) {
  int runs = 0;
  int errors = 0;
  for (const auto& operation : operations())
    for (std::size_t number = 0; number < operation.replies.size(); ++number)
      support::JsonMutations(json::parse(operation.replies[number])).forEach([&](const json::value& mutated) {
        ++runs;
        runWith(operation, number, json::serialize(mutated), [&](const Outcome& ended, const auto& log) {
          if (!ended)
            return;
          ++errors;
          EXPECT_EQ(*ended, JMAPError::badResponse());
          ASSERT_EQ(log.size(), 1u);
          EXPECT_TRUE(log[0].starts_with(std::string("error network: ") + operation.name + ": ")) << log[0];
        });
      });
  EXPECT_GT(runs, 1000);
  EXPECT_GT(errors, 500);
}

TEST(BrokenReplies, ATruncatedReplyGivesTheParsersError) {
  for (const auto& operation : operations()) {
    const auto& whole = operation.replies.front();
    for (std::size_t size = 1; size < whole.size(); ++size)
      runWith(operation, 0, whole.substr(0, size), [&](const Outcome& ended, const auto& log) {
        const std::string_view name = operation.name;
        if (name == "setMailboxMembership" || name == "highlightExportInfo")
          EXPECT_EQ(log.size(), 1u);
        else if (name != "fetchAttachments") // which does without the first reply
          EXPECT_EQ(ended.value().kind, JMAPError::Kind::malformed);
      });
  }
}

TEST(BrokenReplies, OnesWithoutABottomAreRefused) {
  const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_TRUE(JMAPReply::of(nested(100)).json) << "a message of many parts";
  for (const std::size_t depth : {200, 1000000})
    EXPECT_EQ(JMAPReply::of(nested(depth)).json.error().kind, JMAPError::Kind::malformed) << depth;
}

} // namespace
} // namespace ondrel::jmap
