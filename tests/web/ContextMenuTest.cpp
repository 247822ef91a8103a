#include "CoordinatorTest.h"

#include "web/page/ContextMenuRows.h"

namespace ondrel::web {
namespace {

using platform::ContextHit;
using platform::MenuAction;

constexpr auto page = "https://app.example.com/mail/Inbox/";

// The titles of a menu, groups between "|".
std::string titles(const platform::ContextMenu& menu) {
  std::string result;
  for (const auto& group : menu) {
    result += result.empty() ? "" : "| ";
    for (const auto& row : group)
      result += (row.action == MenuAction::spelling ? "(spelling)" : row.title) + "; ";
  }
  return result;
}

TEST(ContextMenuRows, OffersWhatMakesSenseThere) {
  const std::string open =
      "Open Link in New Tab; Open Link in Background Tab; Open Link in New Window; Open Link in Browser; ";
  const std::string edit = "Cut; Copy; Paste; Paste as Plain Text; | Select All; Insert Emoji; ";
  const MenuFacts plain{.pageURL = page};
  const MenuFacts able{page, false, true, true, true, true, false};
  const MenuFacts letter{.pageURL = page, .canGoBack = true, .isWritingLetter = true};
  const auto link = [](const std::string& url) { return ContextHit{.linkURL = url}; };
  const struct {
    ContextHit hit;
    MenuFacts facts;
    std::string titles;
  } table[] = {
      {link("https://x.example/"), plain, open + "Copy Link Address; "},
      {{page, "https://x.example/p.png", true, false},
       able,
       open + "Copy Link Address; | Save Image As…; Copy Image; | Copy; Highlight Selection; "},
      {link("https://files.example/1"),
       {.pageURL = page, .isFile = true},
       "Save File As…; Open Link in Browser; Copy Link Address; "},
      {link("mailto:a@b.example?subject=x"), able, "New Message to This Address; Copy Email Address; "},
      {link("mailto:a@b.example"), plain, "Copy Email Address; "},
      {link("tel:+49 30"), able, "Open Link; Copy Link Address; "},
      {link("javascript:alert(1)"), able, "Back; Forward; Reload; "},
      {link(std::string(page) + "#"), plain, "Reload; "},
      {{"", "", true, true}, able, "(spelling); | " + edit},
      {{"https://x.example/", "", false, true},
       letter,
       "(spelling); | " + open + "Copy Link Address; | " + edit},
      {{}, letter, ""},
  };
  for (const auto& row : table)
    EXPECT_EQ(titles(contextMenuRows(row.hit, row.facts)), row.titles) << row.hit.linkURL;
  const auto copied = [&](const std::string& address) {
    return contextMenuRows(link("mailto:" + address), able)[0][1].text;
  };
  EXPECT_EQ(copied("%22a%20b%22@c.example?cc=d"), "\"a b\"@c.example");
  EXPECT_EQ(copied("%C3%A4@b.example"), "ä@b.example");
  for (const auto* hostile :
       {"a@b.example%0Acurl%20x|sh%0A", "a%E2%80%AE@b.example", "a%00", "%FF@b.example"})
    EXPECT_EQ(copied(hostile), hostile);
}

using PageMenuTest = CoordinatorTest;

TEST_F(PageMenuTest, LinksOpenAsByAClickAndOnlyWhereAClickGets) {
  const auto opened = [this](MenuAction action, const std::string& link, std::uint64_t gesture) {
    const auto before = windows();
    engine().didChoose(action, {.linkURL = link}, gesture);
    shell.settle();
    return windows() - before;
  };
  EXPECT_EQ(opened(MenuAction::openInBackgroundTab, "https://x.example/", 1), 1U);
  EXPECT_EQ(opened(MenuAction::openInWindow, page, 2), 1U);
  EXPECT_EQ(opened(MenuAction::openInTab, page, 3), 1U);
  EXPECT_EQ(opened(MenuAction::openInTab, page, 3), 0U) << "one for each choice";
  EXPECT_EQ(opened(MenuAction::openInTab, "file:///etc/passwd", 4), 0U);
  EXPECT_EQ(opened(MenuAction::openInBrowser, "file:///etc/passwd", 5), 0U);
  EXPECT_TRUE(shell.uriLauncher.opened.empty());
  engine().didChoose(MenuAction::openInBrowser, {.linkURL = "https://x.example/"}, 6);
  EXPECT_EQ(shell.uriLauncher.opened, Calls{"https://x.example/"});
}

} // namespace
} // namespace ondrel::web
