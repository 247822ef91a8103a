// The open conversation on paper, without the application around it.
#include "ScriptTest.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace ondrel::tests {
namespace {

class PrintedMessageTest : public ScriptTest {
 protected:
  std::string paper() {
    PrintSettings settings;
    settings.pdfPath = folder_ / "page.pdf";
    EXPECT_EQ(run(view().print(settings)), PrintResult::done);
    const auto text = folder_ / "page.txt";
    EXPECT_EQ(std::system(("pdftotext '" + *settings.pdfPath + "' '" + text.string() + "'").c_str()), 0);
    std::ifstream file(text);
    return {std::istreambuf_iterator(file), {}};
  }
  static std::string page(const std::string& head, const std::string& main) {
    return "<!doctype html><style>html,body{height:100%;margin:0;overflow:hidden}"
           "#s{height:200px;overflow:auto}</style>" +
           head + "<nav>Mailboxes</nav><div id=s>" + main + "</div>";
  }
};

TEST_F(PrintedMessageTest, LeavesTheFrameOutAndTheScreenAsItWas) {
  const auto script = asked("printedMessage");
  const std::string cards =
      "<h1>Heading</h1><div class=v-MessageCard>From Nadia <time>1 May</time><button>Reply</button>"
      "<div class=v-Message-body>first<p style='margin-top:1500px'>far below</p></div></div>"
      "<button class=v-MessageCard-showMore>21 others</button><div class=v-MessageCard>From Tom<div "
      "class=v-Message-body>second</div></div>";
  const struct {
    std::string html;
    bool isOurs;
    std::string has; // words, with spaces between
  } cases[] = {
      {page("", cards), true, "Plans Nadia May below 21 others Tom second"},
      {page("", "<div class=v-Message-body>alone</div>"), true, "Plans alone"},
      {page("<style>@media print { nav { color: red } }</style>", cards), false, "Mailboxes"},
      {page("", "<div class=v-Compose></div>" + cards), false, "Mailboxes"},
  };
  for (const auto& each : cases) {
    loadHtml(each.html);
    evaluate("FastMail = {router: {appController: {message: {get: () => 'Plans'}}}}; 0");
    const auto seen = "document.documentElement.outerHTML + document.body.innerText + s.scrollHeight";
    const auto before = evaluateToText(seen);
    EXPECT_EQ(evaluate(script + "(true)"), boost::json::value(each.isOurs)) << each.html;
    EXPECT_EQ(evaluateToText("document.body.innerText.includes('Plans')"), "false") << "on the screen";
    const auto text = paper();
    std::istringstream words(each.has);
    for (std::string word; words >> word;)
      EXPECT_TRUE(text.contains(word)) << word << " in " << text;
    EXPECT_FALSE(each.isOurs && (text.contains("Mailboxes") || text.contains("Reply"))) << text;
    evaluate(script + "(false)");
    EXPECT_EQ(evaluateToText(seen), before);
  }
}

} // namespace
} // namespace ondrel::tests
