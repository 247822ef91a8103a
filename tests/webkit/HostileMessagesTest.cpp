// Script messages of pages that mean harm, or know no better.
#include "support/WebKitTest.h"

#include <boost/json/serialize.hpp>

namespace ondrel::tests {

class HostileMessagesTest : public WebKitTest {
 protected:
  // Posts each body from the page and gives what arrived, as JSON; what was dropped is missing. The page's
  // own exceptions arrive as text.
  std::vector<std::string> arrivals(const std::vector<std::string>& bodies) {
    std::string script = "const bridge = window.webkit.messageHandlers.ondrel;";
    for (const auto& body : bodies)
      script += "try { bridge.postMessage(" + body + ") } catch (e) { bridge.postMessage('threw ' + e) };";
    evaluate(script + "bridge.postMessage('last'); 0");
    waitFor([&] {
      return !delegate_.messages.empty() && delegate_.messages.back().body == boost::json::value("last");
    });
    std::vector<std::string> result;
    for (const auto& message : delegate_.messages)
      result.push_back(boost::json::serialize(message.body));
    if (!result.empty())
      result.pop_back();
    return result;
  }
};

TEST_F(HostileMessagesTest, BodiesThatJsonCannotExpress) {
  loadHtml("<p>page</p>");
  const std::vector<std::string> expected = {"null",
                                             "null",
                                             "null",
                                             "null",
                                             "null",
                                             "null",
                                             "null",
                                             "{\"a\":1}",
                                             "\"a\xEF\xBF\xBD\"",
                                             "\"\xF0\x9F\x98\x80\"",
                                             "\"\\\\ud800\"",
                                             "null"};
  EXPECT_EQ(
      arrivals({"undefined", "null", "function() {}", "Symbol('x')", "10n",
                "(() => { const o = {}; o.o = o; return o })()", "{toJSON() { throw new Error('mine') }}",
                "{a: 1, b: undefined, c() {}}", "'a\\ud800'", "'\\ud83d\\ude00'", "'\\\\ud800'",
                // Too deep for the engine's own encoder.
                "(() => { let o = 1; for (let i = 0; i < 200000; i++) o = [o]; return o })()"}),
      expected);
}

TEST_F(HostileMessagesTest, TooDeepAndTooLargeAreDropped) {
  loadHtml("<p>page</p>");
  const auto nested = [](int depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  const auto text = [](int size) { return "'x'.repeat(" + std::to_string(size) + ")"; };
  constexpr auto limit = static_cast<int>(ScriptMessage::largestBody);
  const auto arrived = arrivals({nested(32), nested(33), text(limit - 2), text(limit - 1), text(2 * limit)});
  ASSERT_EQ(arrived.size(), 2U);
  EXPECT_EQ(arrived[0], nested(32));
  EXPECT_EQ(arrived[1].size(), ScriptMessage::largestBody) << "with its quotes, the largest that passes";
  EXPECT_EQ(
      log_.count("error script: A script message of " + std::to_string(limit + 1) + " bytes was dropped"), 1);
  EXPECT_EQ(log_.count("error script: A script message is nested too deep and was dropped"), 1);
}

TEST_F(HostileMessagesTest, PageThatChangesTheLanguageHarmsOnlyItself) {
  loadHtml("<p>page</p>");
  evaluate("JSON.stringify = () => '\"forged\"'; Object.defineProperty = null; Array.prototype.push = null;"
           "Object.prototype.type = 'polluted'; String = null; 0");
  EXPECT_EQ(arrivals({"{a: [1, 'b']}"}), std::vector<std::string>{"{\"a\":[1,\"b\"]}"});
  evaluate("delete window.webkit; window.webkit = {get messageHandlers() { throw 1 }}; 0");
  // The next document has its handlers again.
  delegate_.messages.clear();
  loadHtml(posting("'back'"));
  ASSERT_TRUE(waitForMessages(1));
  EXPECT_EQ(delegate_.messages.back().body, boost::json::value("back"));
}

TEST_F(HostileMessagesTest, OnlyRegisteredNamesArrive) {
  loadHtml("<p>page</p>");
  EXPECT_EQ(evaluateToText("window.webkit.messageHandlers.other === undefined"), "true");
  EXPECT_EQ(arrivals({"'heard'"}).size(), 1U);
  view().removeScriptMessageHandler("ondrel");
  view().removeScriptMessageHandler("never added");
  delegate_.messages.clear();
  evaluate("bridge.postMessage('unheard'); 0");
  runFor(200ms);
  EXPECT_TRUE(delegate_.messages.empty());
  view().addScriptMessageHandler("ondrel");
  evaluate("bridge.postMessage('heard again'); 0");
  ASSERT_TRUE(waitForMessages(1));
}

} // namespace ondrel::tests
