// What the engine reports of a search.
#include "platform/PageFinder.h"
#include "support/WebKitTest.h"

namespace ondrel::tests {
namespace {

TEST_F(WebKitTest, FindsCountsAndGoesRound) {
  loadHtml("<p id=a>Foo bar</p><p id=b>foo</p><textarea>foo</textarea><iframe srcdoc=foo></iframe>"
           "<p hidden>foo</p>");
  waitFor([&] { return evaluateToText("frames[0].document.body?.textContent") == "\"foo\""; });
  auto& finder = view().finder();
  std::vector<unsigned> found;
  const auto subscription = finder.found.subscribe([&](unsigned matches) { found.push_back(matches); });
  const auto answer = [&] {
    waitFor([&] { return !found.empty(); });
    runFor(100ms);
    return std::exchange(found, {});
  };
  const auto place = [&] { return evaluateToText("getSelection().anchorNode?.parentNode?.id ?? ''"); };
  using Counts = std::vector<unsigned>;
  finder.find("foo");
  EXPECT_EQ(answer(), Counts{4}) << "in fields and frames too";
  EXPECT_EQ(place(), "\"a\"");
  finder.findNext();
  EXPECT_EQ(answer(), Counts{4}) << "the engine's own answer to a step is always one";
  EXPECT_EQ(place(), "\"b\"");
  for (int i = 0; i < 3; ++i)
    finder.findNext();
  EXPECT_EQ(answer(), Counts{4}) << "told once";
  EXPECT_EQ(place(), "\"a\"");
  finder.findPrevious();
  finder.find("nowhere");
  EXPECT_EQ(answer(), Counts{0});
  evaluate("document.body.textContent = 'x '.repeat(1500); 0");
  finder.find("x");
  EXPECT_EQ(answer(), Counts{PageFinder::mostCounted + 1});
  view().terminateWebProcess();
  finder.find("x");
  EXPECT_EQ(answer(), Counts{0}) << "an answer comes all the same";
}

} // namespace
} // namespace ondrel::tests
