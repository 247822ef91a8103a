#include "web/page/NavigationRules.h"

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

} // namespace ondrel::web
