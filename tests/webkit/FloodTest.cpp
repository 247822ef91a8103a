// A page that posts more messages than anybody can read.
#include "WebKitTest.h"
#include "async/Timer.h"

namespace ondrel::tests {

class FloodTest : public WebKitTest {
 protected:
  std::size_t arrived() const { return delegate_.messages.size(); }
  void noteTurns() {
    timer_ = async::Timer(5ms, [this] {
      turns_.push_back(arrived());
      noteTurns();
    });
  }
  // The most messages between two turns.
  std::size_t longestWait() const {
    std::size_t longest = 0;
    std::size_t last = 0;
    for (const auto turn : turns_)
      longest = std::max(longest, turn - std::exchange(last, turn));
    return std::max(longest, arrived() - last);
  }

  std::vector<std::size_t> turns_; // how much of the flood had arrived at each turn of a timer
  async::Timer timer_;
};

TEST_F(FloodTest, LeavesOtherWorkItsTurn) {
  constexpr std::size_t flood = 100'000;
  loadHtml("<script>const flood = () => { for (let i = 0; i < 100000; ++i)"
           "  window.webkit.messageHandlers.ondrel.postMessage({type: 'mouseover', href: String(i)}) }"
           "</script>");
  evaluate("setTimeout(flood); 0");
  ASSERT_TRUE(waitForMessages(1));
  ASSERT_LT(arrived(), flood / 10) << "the test must begin early in the flood";
  noteTurns();
  ASSERT_TRUE(waitFor([&] { return arrived() >= flood; }, 120s)) << arrived();
  EXPECT_LT(longestWait(), flood / 20) << "of " << turns_.size() << " turns";
  // In their order, each once; and the page answers again.
  for (std::size_t i = 0; i < flood; ++i)
    ASSERT_EQ(delegate_.messages[i].body.at("href"), boost::json::value(std::to_string(i)));
  EXPECT_EQ(evaluateToText("1"), "1");
  EXPECT_EQ(arrived(), flood);
}

} // namespace ondrel::tests
