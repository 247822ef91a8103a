// What a page may put into its history.
#include "support/WebKitTest.h"

namespace ondrel::tests {

class HistoryLimitsTest : public WebKitTest {
 protected:
  // "ok", or the name of the exception.
  std::string attempt(const std::string& call) {
    return evaluateToText("(() => { try { " + call + "; return 'ok' } catch (e) { return e.name } })()");
  }
};

TEST_F(HistoryLimitsTest, LargeStatesAreRefused) {
  loadHtml("<iframe id=f></iframe><script>var n = 0, size = 300 << 10, text = 'x'.repeat(size), number = 10n "
           "** 300000n</script>");
  const struct {
    const char* state;
    const char* result;
  } table[] = {
      {"'x'.repeat(250 << 10)", "ok"},
      {"{a: [1, {b: new Date()}, new Map([[1, new Set([2])]]), new Uint8Array(200 << 10)]}", "ok"},
      {"(() => { const o = {}; o.o = o; return o })()", "ok"},
      {"text", "QuotaExceededError"},
      {"{[text]: 1}", "QuotaExceededError"},
      {"'\\u0100'.repeat(size / 2)", "QuotaExceededError"},
      {"Array(size / 8).fill(1)", "QuotaExceededError"},
      {"new Map([[1, text]])", "QuotaExceededError"},
      {"new Set([text])", "QuotaExceededError"},
      {"new ArrayBuffer(size)", "QuotaExceededError"},
      {"new Uint8Array(new ArrayBuffer(size), 0, 1)", "QuotaExceededError"},
      {"new DataView(new ArrayBuffer(size), 0, 1)", "QuotaExceededError"},
      {"new ImageData(300, 300)", "QuotaExceededError"},
      {"[number, number, number]", "QuotaExceededError"},
      {"[Object(number), Object(number), Object(number)]", "QuotaExceededError"},
      {"new String(text)", "QuotaExceededError"},
      {"new RegExp(text)", "QuotaExceededError"},
      {"() => 1", "DataCloneError"},
      // Another one the second time.
      {"{get a() { return ++n > 1 ? text : '' }}", "ok"},
  };
  for (const auto& row : table)
    for (const std::string method : {"pushState", "replaceState"}) {
      evaluate("n = 0");
      EXPECT_EQ(attempt("history." + method + "(" + row.state + ", '')"), '"' + std::string(row.result) + '"')
          << row.state;
    }
  EXPECT_EQ(evaluateToText("history.state"), "{\"a\":\"\"}");
}

TEST_F(HistoryLimitsTest, AllElseIsAsItWas) {
  loadHtml("<p>page</p>");
  EXPECT_EQ(evaluateToText("history.pushState({a: 1}, '', '/x'); [history.state.a, location.pathname, "
                           "history.length, history.pushState.name, history.pushState.length]"),
            "[1,\"/x\",2,\"pushState\",2]");
  EXPECT_EQ(attempt("history.pushState()"), "\"TypeError\"");
  EXPECT_EQ(attempt("history.pushState.call({}, 1, '')"), "\"TypeError\"");
  EXPECT_EQ(attempt("history.pushState(1, '', 'https://elsewhere.example/')"), "\"SecurityError\"");
  EXPECT_EQ(attempt("history.pushState(1, '', '?' + 'x'.repeat(70 << 10))"), "\"QuotaExceededError\"");
  EXPECT_EQ(attempt("history.replaceState(2, '', undefined)"), "\"ok\"");
  EXPECT_EQ(evaluateToText("[history.state, location.pathname]"), "[2,\"/x\"]");
}

TEST_F(HistoryLimitsTest, PageGetsNoHoldOfTheOriginal) {
  loadHtml("<iframe id=f></iframe><script>var text = 'x'.repeat(1 << 20);"
           "Reflect.apply = () => 0; window.structuredClone = () => 1; Set.prototype.has = () => true;"
           "String.prototype.charCodeAt = Map.prototype.forEach = null; Reflect.ownKeys = () => [];"
           "Object.defineProperty(Array.prototype, 0, {set() {}}); Array.prototype[Symbol.iterator] = null;"
           "Function.prototype.call = Function.prototype.apply = null; window.DOMException = Error"
           "</script>");
  for (const char* call : {"history.pushState([text], '')", "history.pushState(new Map([text]), '')",
                           "f.contentWindow.history.pushState(text, '')",
                           "History.prototype.replaceState.bind(history)(text, '')",
                           "f.contentWindow.History.prototype.pushState.bind(history)(text, '')"})
    EXPECT_NE(attempt(call), "\"ok\"") << call;
  EXPECT_EQ(evaluateToText("[history.length, history.state, f.contentWindow.history.state]"),
            "[1,null,null]");
}

TEST_F(HistoryLimitsTest, HistoryThatIsTooLargeIsNotWrittenDown) {
  loadHtml("<p>page</p>");
  evaluate("for (let i = 0; i < 40; ++i) history.pushState('x'.repeat(4000), ''); 0");
  EXPECT_TRUE(view().interactionState());
  evaluate("for (let i = 0; i < 5; ++i) history.pushState('x'.repeat(220 << 10), ''); 0");
  EXPECT_TRUE(waitFor([&] { return !view().interactionState(); }));
}

} // namespace ondrel::tests
