// Lines that come faster than what they name can be asked for.
#include "JMAPSessionFixture.h"

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;

class EventBurstTest : public JMAPSessionTest {
 protected:
  // Lines that more lines have followed already.
  void give(int times) {
    for (int i = 0; i < times; ++i) {
      http.feeds[0]->give("data: {\"Email\":1,\"Mailbox\":2}\n");
      loop.runUntilIdle();
    }
  }
};

TEST_F(EventBurstTest, IsAskedAboutOnceAtItsEnd) {
  connect();
  http.feeds[0]->more = true;
  give(100);
  EXPECT_TRUE(methods.empty());
  EXPECT_EQ(log.count("info network: SSE: Email change event received"), 100);
  http.feeds[0]->more = false;
  http.feeds[0]->give(": ping\n");
  loop.runUntilIdle();
  EXPECT_EQ(calls("Email/changes"), 1);
  EXPECT_EQ(calls("Mailbox/get"), 1);
  http.feeds[0]->give(": ping\n");
  loop.runUntilIdle();
  EXPECT_EQ(methods.size(), 2U) << "nothing is left of it";
}

TEST_F(EventBurstTest, IsAskedAboutAtTheEndOfTheConnection) {
  connect();
  http.feeds[0]->more = true;
  give(1);
  http.feeds[0]->give(std::unexpected(support::FakeHttpClient::failure("reset")));
  loop.runUntilIdle();
  EXPECT_EQ(calls("Email/changes"), 1);
  EXPECT_EQ(calls("Mailbox/get"), 1);
}

TEST_F(EventBurstTest, IsAskedAboutEachSecondWhileItGoesOn) {
  connect();
  http.feeds[0]->more = true;
  for (int i = 0; i < 50; ++i) {
    give(1);
    loop.advance(100ms);
  }
  EXPECT_GE(calls("Email/changes"), 4);
  EXPECT_LE(calls("Email/changes"), 5);
}

} // namespace
} // namespace ondrel::jmap
