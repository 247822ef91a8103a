#include "platform/linux/windows/KeyMapping.h"

#include <gtest/gtest.h>

namespace ondrel::platform {

namespace {

constexpr auto none = GdkModifierType{};
constexpr auto ctrl = GDK_CONTROL_MASK;
constexpr auto alt = GDK_ALT_MASK;
constexpr auto ctrlShift = static_cast<GdkModifierType>(GDK_CONTROL_MASK | GDK_SHIFT_MASK);
constexpr auto ctrlLocks = static_cast<GdkModifierType>(GDK_CONTROL_MASK | GDK_LOCK_MASK | (1 << 4));
constexpr auto command = Modifiers::command;
constexpr auto control = Modifiers::control;
constexpr auto shift = Modifiers::shift;

const std::vector<windows::KeySymbol> usOne{{0, 0, GDK_KEY_1}, {0, 1, GDK_KEY_exclam}};
const std::vector<windows::KeySymbol> frenchOne{{0, 0, GDK_KEY_ampersand}, {0, 1, GDK_KEY_1}};
const std::vector<windows::KeySymbol> russianF{
    {0, 0, GDK_KEY_Cyrillic_a}, {0, 1, GDK_KEY_Cyrillic_A}, {1, 0, GDK_KEY_f}, {1, 1, GDK_KEY_F}};

struct Case {
  const char* name;
  guint keyval;
  GdkModifierType state;
  std::vector<windows::KeySymbol> symbols;
  bool isTab;
  std::uint32_t flags;
  const char* characters;
};

TEST(KeyMapping, GivesTheProgramsTerms) {
  const Case cases[] = {
      {"Ctrl+Tab", GDK_KEY_Tab, ctrl, {}, true, control, "\t"},
      {"Ctrl+Shift+Tab", GDK_KEY_ISO_Left_Tab, ctrlShift, {}, true, control | shift, "\t"},
      {"Ctrl+Tab with locks on", GDK_KEY_Tab, ctrlLocks, {}, true, control, "\t"},
      {"Ctrl+1", GDK_KEY_1, ctrl, usOne, false, command, "1"},
      {"Ctrl+Shift+1", GDK_KEY_exclam, ctrlShift, usOne, false, command | shift, "!"},
      {"French Ctrl+1", GDK_KEY_ampersand, ctrl, frenchOne, false, command, "1"},
      {"Alt+1", GDK_KEY_1, alt, usOne, false, Modifiers::option, "1"},
      {"Russian Ctrl+Shift+F", GDK_KEY_Cyrillic_A, ctrlShift, russianF, false, command | shift, "F"},
      {"Russian letter", GDK_KEY_Cyrillic_a, none, russianF, false, 0, "а"},
      {"Ctrl+Left", GDK_KEY_Left, ctrl, {}, false, command, ""},
      {"Super+1", GDK_KEY_1, GDK_SUPER_MASK, usOne, false, 0, "1"},
  };
  for (const auto& [name, keyval, state, symbols, isTab, flags, characters] : cases) {
    const auto event = windows::keyEventFrom(keyval, state, symbols);
    EXPECT_EQ(event.isTab, isTab) << name;
    EXPECT_TRUE(event.modifiers.exactly(flags)) << name << ": " << event.modifiers.flags;
    EXPECT_EQ(event.characters, characters) << name;
    EXPECT_EQ(event.charactersIgnoringModifiers, characters) << name;
  }
}

} // namespace

} // namespace ondrel::platform
