#include "web/page/NavigationRules.h"
#include "web/page/TabTitle.h"

#include <gtest/gtest.h>

#include <string>

namespace ondrel::web {

TEST(NavigationRules, EachAddressHasItsUse) {
  constexpr auto stay = AddressUse::stay;
  constexpr auto desktop = AddressUse::handToDesktop;
  constexpr auto cancel = AddressUse::cancel;
  const struct {
    std::string address;
    AddressUse inMainFrame;
    AddressUse inUnknownFrame;
  } table[] = {
      {"https://x.example/", stay, stay},
      {"HTTP://x.example/", stay, stay},
      {"about:blank", stay, stay},
      {"about:srcdoc", cancel, stay},
      {"about:config", cancel, cancel},
      {"data:text/html,x", cancel, stay},
      {"webkit-pdfjs-viewer:///web/viewer.html", cancel, stay},
      {"mailto:a@b.example", desktop, desktop},
      {"TEL:+1", desktop, desktop},
      {"file:///etc/passwd", cancel, cancel},
      {"javascript:alert(1)", cancel, cancel},
      {"httpsx://x.example/", desktop, desktop},
      {"", cancel, cancel},
      {"https://x.example/#" + std::string(64 << 10, 'x'), cancel, cancel},
      {"data:text/html," + std::string(64 << 10, 'x'), cancel, stay},
  };
  for (const auto& row : table) {
    EXPECT_EQ(addressUse(row.address, TargetFrame::main), row.inMainFrame) << row.address;
    EXPECT_EQ(addressUse(row.address, TargetFrame::unknown), row.inUnknownFrame) << row.address;
  }
}

TEST(TabTitle, IsThatOfThePageOrOfTheMailboxWithoutItsCount) {
  const struct {
    std::string title;
    std::string path;
    std::string shown;
  } table[] = {{"Inbox (3)", "/mail/Inbox/?u=1", "Inbox"},
               {"(1,234) Old mail", "/mail/Old%20mail?u=1", "Old mail"},
               {"Plans (old)", "/mail/Plans/", "Plans (old)"},
               {"Order (3)", "/mail/Inbox/T1.M1?u=1", "Order (3)"},
               {"Letter (3)", "/mail/compose?to=a", "Letter (3)"}};
  for (const auto& row : table)
    EXPECT_EQ(tabTitle(row.title, "https://x.example" + row.path), row.shown) << row.title;
}

} // namespace ondrel::web
