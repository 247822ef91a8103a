// What the page is asked to do with the message that it was sent to.
#include "ScriptTest.h"

#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"

namespace ondrel::tests {
namespace {

using SelectRowScriptTest = ScriptTest;

TEST_F(SelectRowScriptTest, OpensTheMessageAndFocusesItsThread) {
  const auto script = scripts::pageScriptSource(platform::text::resourceText,
                                                scripts::ConsoleRelay::unwanted)("selectRowScript");
  ASSERT_TRUE(script);
  const std::string other = "<li id=o class=is-focused><a href=/mail/Inbox/T2.M9></a></li>";
  const struct {
    std::string rows;
    std::string message;
    bool done;
    std::string seen; // the message that was opened and the row that is focused
  } cases[] = {
      {"<li id=t><a href=/mail/Inbox/T1.M1></a></li>", "null", false, " o"},
      {"<li id=t><a href=/mail/Inbox/T1.M1></a></li>", "{id: () => 'M2'}", false, " o"},
      {"<li id=t><a href=/mail/Inbox/T1.M1></a></li>", "{id: () => 'M1'}", true, "M1 o"},
      {"<li id=t><a href=/mail/Inbox/T1.M3></a></li>", "{id: () => 'M1'}", true, "M1 t"},
      {"", "{id: () => 'M1'}", false, "M1 o"},
  };
  loadHtml("");
  EXPECT_EQ(evaluate(*script + R"(("M1", "T1"))"), boost::json::value(false)) << "no application";
  for (const auto& each : cases) {
    loadHtml("<!doctype html><body>" + other + each.rows);
    evaluate("FastMail = {router: {appController: {message: " + each.message +
             ", goMessage: (message) => opened = message.id()}}}; opened = ''; 0");
    EXPECT_EQ(evaluate(*script + R"(("M1", "T1"))"), boost::json::value(each.done)) << each.seen;
    EXPECT_EQ(evaluate("opened + ' ' + document.querySelector('.is-focused').id"),
              boost::json::value(each.seen));
  }
}

} // namespace
} // namespace ondrel::tests
