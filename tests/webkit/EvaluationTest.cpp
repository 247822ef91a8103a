#include "support/WebKitTest.h"

#include <boost/json/serialize.hpp>

namespace ondrel::tests {

using EvaluationTest = WebKitTest;

TEST_F(EvaluationTest, ValuesAndErrorsOfTheMainFrame) {
  loadHtml("<script>var page = 'page'</script>");
  const struct {
    const char* source;
    const char* result;
  } table[] = {
      {"page", "\"page\""},
      {"({'a b': [1, null, {}]})", "{\"a b\":[1,null,{}]}"}, // of several members the order is not kept
      {"undefined", "null"},
      {"'a\\u0000b'", "\"a\\u0000b\""},
      {"'\\ud800x'", "\"\xEF\xBF\xBDx\""},
      {"'\xC3\xA9'", "\"\xC3\xA9\""},
      {"document.body", "unsupportedValue"},
      {"(function() {})", "unsupportedValue"},
      {"throw new Error('boom')", "exception"},
  };
  for (const auto& [source, result] : table)
    EXPECT_EQ(evaluateToText(source), result) << source;

  const auto thrown = evaluate("throw new Error('boom')");
  ASSERT_FALSE(thrown);
  EXPECT_NE(thrown.error().message.find("boom"), std::string::npos) << thrown.error().message;
}

TEST_F(EvaluationTest, PageThatNeverAnswersTimesOut) {
  loadHtml(posting("'main'"));
  ASSERT_TRUE(waitForMessages(1));
  const auto start = loop_.now();
  const auto result = evaluate("while (true) {}", {}, 200ms);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().kind, ScriptError::Kind::timedOut);
  // A second one waits behind it, and so does one through the extension.
  const auto inFrame = evaluate("1", messageWith("main").frame, 100ms);
  ASSERT_FALSE(inFrame);
  EXPECT_EQ(inFrame.error().kind, ScriptError::Kind::timedOut);
  EXPECT_LT(loop_.now() - start, 3s);

  // The hung page doesn't keep its web view, and another one works.
  const std::weak_ptr<WebView> weak = view_;
  view_->setDelegate(nullptr);
  view_.reset();
  EXPECT_TRUE(weak.expired());
  delegate_.events.clear();
  loadUrl(server_.url("/page"));
  EXPECT_EQ(evaluateToText("2"), "2");
}

TEST_F(EvaluationTest, WebViewMayGoBeforeTheAnswer) {
  loadHtml("<p>page</p>");
  std::optional<ScriptResult> result;
  async::Scope scope;
  auto evaluation = view().evaluate("1", std::nullopt, 5s);
  const auto task = [](async::Task<ScriptResult> inner,
                       std::optional<ScriptResult>& out) -> async::Task<void> {
    out = co_await std::move(inner);
  };
  scope.spawn(task(std::move(evaluation), result));
  view_->setDelegate(nullptr);
  view_.reset();
  ASSERT_TRUE(waitFor([&] { return result.has_value(); }));
  ASSERT_FALSE(*result);
}

} // namespace ondrel::tests
