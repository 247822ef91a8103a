// Runs the cases of the .js files in this folder, each on a page of its own.
#include "ScriptTest.h"
#include "integrations/StyleScript.h"

#include <boost/json/serialize.hpp>

namespace ondrel::tests {

class PageScriptsTest : public ScriptTest, public testing::WithParamInterface<const char*> {};

TEST_P(PageScriptsTest, DoAsTheirCasesSay) {
  const auto file = std::string(GetParam()) + ".js";
  const Scripts words{injected("prelude.js"), injected("highlightWords.js"), injected(file)};
  useScripts(words);
  loadHtml("");
  const auto cases = evaluate("listTests()");
  ASSERT_TRUE(cases) << cases.error().message;
  ASSERT_FALSE(cases->as_array().empty());
  boost::json::value names;
  for (std::size_t i = 0; i < cases->as_array().size(); ++i) {
    const auto& wanted = cases->as_array()[i].as_object();
    const auto text = [&](const char* field) { return std::string(wanted.at(field).as_string()); };
    if (names != wanted.at("scripts")) {
      names = wanted.at("scripts");
      auto scripts = words;
      for (const auto& name : names.as_array())
        scripts.push_back(pageScript(name.as_string()));
      useScripts(std::move(scripts));
    }
    const auto path = text("path");
    server_.serve("/frame", text("frame"));
    server_.serve(path.substr(0, path.find_first_of("?#")), "<!doctype html><body>" + text("html"));
    loadUrl(server_.url(path));
    runInPage("runTest(" + std::to_string(i) + ")", file + ": " + text("name"));
  }
}

INSTANTIATE_TEST_SUITE_P(Of, PageScriptsTest,
                         testing::Values("smallScripts", "composeScripts", "filesAutoShareScript",
                                         "replySelectionScript", "highlightPainting", "highlightHands",
                                         "mailboxMarkerScript"),
                         [](const auto& tested) { return tested.param; });

TEST_F(ScriptTest, TheUsersStylesAreOneSheetAsTheyWereWritten) {
  loadHtml("<p>page</p>");
  evaluate(integrations::styleScript("first"));
  evaluate(integrations::styleScript("a`b\\c$d\n</style>${1 + 1}"));
  EXPECT_EQ(evaluateToText("Array.from(document.querySelectorAll('#ondrel-css'), s => s.textContent)"),
            "[\"a`b\\\\c$d\\n</style>2\"]");
  const auto failed = evaluate(integrations::styleScript("\n${nobody}"));
  EXPECT_EQ(failed ? 0 : failed.error().line, integrations::firstLineOfStyles + 1);
  evaluate(integrations::styleRemoval);
  EXPECT_EQ(evaluateToText("document.querySelectorAll('style').length"), "0");
}

} // namespace ondrel::tests
