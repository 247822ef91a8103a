#include "highlights/HighlightList.h"
#include "TransferWorld.h"

namespace ondrel::highlights {
namespace {

using namespace std::chrono_literals;
using Subjects = std::vector<std::string>;

// The server knows 1@x, 2@x and 3@x, which it is asked for one after the other, and answers late.
class HighlightListTest : public TransferWorld {
 protected:
  HighlightListTest() {
    client.delay = 2s;
    resolve("1", "One");
    resolve("2", "Two");
    resolve("3", "Three");
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

  int added = 0;
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
  client.answerOnly("Email/query", found("1", "One"));
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
  add("3@x"); // while the server is asked
  shell.loop.advance(10s);
  EXPECT_EQ(subjects(), (Subjects{"Three", "Two", "One", "One"}));
  EXPECT_EQ(client.sent.size(), sent + 4) << "what is known is not asked for again";
  store.remove("1", "1@x");
  shell.loop.advance(200ms);
  EXPECT_EQ(subjects(), (Subjects{"Three", "Two", "One"}));

  int changes = 0;
  const auto watching = list->changed.subscribe([&](bool) { ++changes; });
  for (int i = 0; i < 100; ++i)
    add("1@x");
  shell.loop.advance(1s);
  EXPECT_EQ(changes, 1) << "what comes together is shown together";
  store.removeAll();
  EXPECT_EQ(subjects(), Subjects{}) << "at once";
}

} // namespace
} // namespace ondrel::highlights
