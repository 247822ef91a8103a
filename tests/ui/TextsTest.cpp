#include "base/Text.h"
#include "ui/commands/ActionName.h"
#include "ui/widgets/KeyNotation.h"

#include <gtest/gtest.h>

namespace ondrel::ui {
namespace {

TEST(KeyNotationTest, BecomeTheDesktopsNotation) {
  const std::pair<const char*, const char*> cases[] = {
      {"Actual Size ⌘0", "Actual Size Ctrl+0"},
      {"⇧⌘H", "Shift+Ctrl+H"},
      {"⌃⌘F", "Ctrl+F"}, // one key here
      {"⌃⇥ and ⌥←", "Ctrl+Tab and Alt+Left"},
      {"⌘-click a link, or hold ⌘ and click", "Ctrl+click a link, or hold Ctrl and click"},
      {"Größe ← \xE2\x8C", "Größe ← \xE2\x8C"}, // no sign, and half a sign
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(withDesktopKeys(text), expected) << text;
}

TEST(ActionNameTest, IsTheTitleInKebabCase) {
  const std::pair<const char*, const char*> cases[] = {
      {"Export as PDF…", "export-as-pdf"},
      {"Don't Ask -- Again!", "dont-ask-again"},
      {"  Ünder 2 ", "nder-2"},
      {"…", ""},
  };
  for (const auto& [title, expected] : cases)
    EXPECT_EQ(actionName(title), expected) << title;
}

TEST(ShownTextTest, IsOneBoundedLine) {
  EXPECT_EQ(base::shortDisplayLine("https://a.example/\xE2\x80\xAEgpj.exe\r\nsecond"),
            "https://a.example/gpj.exe  second");
  std::string umlauts = "x"; // so that the limit falls into a character
  for (int i = 0; i < 500'000; ++i)
    umlauts += "ü";
  const auto shown = base::shortDisplayLine(umlauts);
  EXPECT_LT(shown.size(), 1100U);
  EXPECT_TRUE(shown.ends_with("ü…")) << "cut between two characters";
}

} // namespace
} // namespace ondrel::ui
