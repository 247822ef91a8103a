#include "ScriptTest.h"

#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"

namespace ondrel::tests {
namespace {

using AttachmentLinkTest = ScriptTest;

TEST_F(AttachmentLinkTest, UnfoldsTheConversationAndFindsTheLink) {
  const auto script = scripts::pageScriptSource(platform::text::resourceText,
                                                scripts::ConsoleRelay::unwanted)("attachmentLink");
  loadHtml(
      R"(<!doctype html><a href=https://elsewhere.example/G1></a><a href=https://x.usercontent.example/G2></a>
      <button class=v-MessageCard-showMore></button>
      <div class="v-MessageCard is-collapsed"><p class=v-MessageCard-header></p><a id=link></a></div>
      <div class=v-MessageCard><p class=v-MessageCard-header></p></div>)");
  evaluate(R"(clicks = ''; addEventListener('click', ({target}) => {
      clicks += target.tagName;
      link.href = 'https://x.usercontent.example/G1/name';
    }); 0)");
  EXPECT_EQ(evaluate(*script + R"(("G1", "usercontent.example"))"),
            boost::json::value("https://x.usercontent.example/G1/name"));
  EXPECT_EQ(evaluate("clicks"), boost::json::value("BUTTONP"));
  EXPECT_EQ(evaluate(*script + R"(("G3", "usercontent.example"))"),
            boost::json::value(boost::json::object{{"_linkCount", 2}}));
}

} // namespace
} // namespace ondrel::tests
