#include "highlights/HighlightList.h"

#include "highlights/HighlightStore.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeTextFormatting.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::highlights {
namespace {

using namespace std::chrono_literals;
using Subjects = std::vector<std::string>;

// The server knows 1@x and 2@x, which it is asked for one after the other, and answers late.
class HighlightListTest : public testing::Test {
 protected:
  HighlightListTest() {
    client.delay = 2s;
    client.answer("Email/query", reply("1", "One"));
    client.answer("Email/query", reply("2", "Two"));
    client.answer("Mailbox/get", support::FakeJMAPClient::reply({R"({"list":[{"id":"B","name":"Inbox"}]})"}));
  }
  static std::string reply(const std::string& number, const std::string& subject) {
    return support::FakeJMAPClient::reply(
        {R"({"ids":[]})", R"({"list":[{"id":"M)" + number + R"(","messageId":[")" + number +
                              R"(@x"],"subject":")" + subject +
                              R"(","mailboxIds":{"B":true},"threadId":"T"}]})"});
  }
  void add(const std::string& messageId) {
    const auto number = static_cast<double>(++added);
    store.add({std::to_string(added), "T", "text", "", "", 0, number}, messageId);
  }
  void open() { list.emplace(store, highlightExport); }
  // Newest first, "?" for messages that are unknown.
  Subjects subjects() {
    Subjects result;
    for (const auto& entry : list->document().value().entries)
      result.push_back(entry.url.empty() ? "?" : entry.subject);
    return result;
  }

  support::TestShell shell;
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, shell.settings, [] {}};
  support::FakeTextFormatting formatting;
  HighlightStore store{shell.files, shell.files};
  int added = 0;
  HighlightExport highlightExport{{.store = store,
                                   .mail = mail,
                                   .settings = shell.settings,
                                   .application = shell.application,
                                   .panels = shell.panels,
                                   .files = shell.files,
                                   .textFormatting = formatting,
                                   .iconPNG = ""}};
  std::optional<HighlightList> list;
};

TEST_F(HighlightListTest, WaitsForAServerThatIsLateButNotForEver) {
  add("1@x");
  open();
  client.delay = 1min;
  shell.loop.advance(2900ms);
  EXPECT_FALSE(list->document());
  shell.loop.advance(200ms);
  EXPECT_EQ(subjects(), Subjects{"?"});
  EXPECT_TRUE(list->isLookingUp());
  EXPECT_EQ(list->problem(), "The mail server hasn't answered yet.");
  list->lookUpAgain(); // in place of the question that takes so long
  EXPECT_EQ(list->problem(), "");
  client.delay = 500ms;
  client.answerOnly("Email/query", reply("1", "One"));
  shell.loop.advance(1s);
  EXPECT_EQ(subjects(), Subjects{"One"});
  EXPECT_FALSE(list->isLookingUp() || !list->problem().empty());
  shell.loop.advance(1min);
  EXPECT_EQ(list->problem(), "");
}

TEST_F(HighlightListTest, FollowsTheStore) {
  open();
  EXPECT_TRUE(list->document()) << "nothing to ask for";
  add("1@x");
  add("gone@x");
  shell.loop.advance(5s);
  EXPECT_EQ(subjects(), Subjects{"One"});
  const auto sent = client.sent.size();
  add("1@x");
  shell.loop.advance(200ms);
  EXPECT_EQ(subjects(), (Subjects{"One", "One"}));
  add("2@x");
  shell.loop.advance(200ms);
  EXPECT_EQ(subjects(), (Subjects{"?", "One", "One"})) << "it shows before its message is known";
  shell.loop.advance(5s);
  EXPECT_EQ(subjects(), (Subjects{"Two", "One", "One"}));
  EXPECT_EQ(client.sent.size(), sent + 2) << "what is known is not asked for again";
  store.remove("1", "1@x");
  shell.loop.advance(200ms);
  EXPECT_EQ(subjects(), (Subjects{"Two", "One"}));

  int changes = 0;
  const auto watching = list->changed.subscribe([&](bool) { ++changes; });
  for (int i = 0; i < 100; ++i)
    add("1@x");
  shell.loop.advance(1s);
  EXPECT_EQ(changes, 1) << "what comes together is shown together";
  store.removeAll();
  EXPECT_EQ(subjects(), Subjects{}) << "at once";
}

TEST_F(HighlightListTest, AsksAgainForWhatWasNotAnswered) {
  client.session = std::unexpected(jmap::JMAPError{jmap::JMAPError::Kind::transport, "refused"});
  add("1@x");
  open();
  shell.loop.advance(1s);
  EXPECT_EQ(subjects(), Subjects{"?"});
  EXPECT_EQ(list->problem(), "The mail server can't be reached.");
  list->search("text");
  shell.loop.advance(1min);
  EXPECT_EQ(client.sessionFetches, 1);

  client.session = support::FakeJMAPClient().session;
  list->lookUpAgain();
  shell.settle();
  add("2@x");
  EXPECT_TRUE(list->isLookingUp());
  shell.loop.advance(10s);
  EXPECT_EQ(subjects(), (Subjects{"Two", "One"}));
  EXPECT_TRUE(list->problem().empty() && !list->isLookingUp());
}

} // namespace
} // namespace ondrel::highlights
