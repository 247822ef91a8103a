#include "shortcuts/KeyboardShortcuts.h"
#include "async/VirtualEventLoop.h"
#include "shortcuts/KeyCombinationText.h"
#include "support/FakeDesktop.h"
#include "support/FakeGlobalShortcuts.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace ondrel::shortcuts {
namespace {

using namespace std::chrono_literals;
using platform::KeyCombination;

TEST(KeyCombinationTest, IsStoredShownAndRead) {
  struct Case {
    const char* stored;
    const char* shown; // null: refused
    bool mayBeReserved = true;
  };
  const std::string endless = "CTRL+" + std::string(100, 'm');
  const Case cases[] = {{"CTRL+ALT+m", "Ctrl+Alt+M"},
                        {"SHIFT+CTRL+ALT+LOGO+space", "Shift+Ctrl+Alt+Super+Space"},
                        {"F9", "F9"},
                        {"LOGO+Page_Up", "Super+Page Up"},
                        {"m", "M", false},
                        {"SHIFT+Tab", "Shift+Tab", false},
                        {"Find", "Find", false},
                        {"", nullptr},
                        {"CTRL+", nullptr},
                        {"+m", nullptr},
                        {"Ctrl+m", nullptr},
                        {"CTRL+m\n", nullptr},
                        {"CTRL+\xC3\xA4", nullptr},
                        {endless.c_str(), nullptr}};
  for (const auto& each : cases) {
    const auto keys = parseKeyCombination(each.stored);
    ASSERT_EQ(keys.has_value(), each.shown != nullptr) << each.stored;
    if (!keys)
      continue;
    EXPECT_EQ(storedText(*keys), each.stored);
    EXPECT_EQ(displayText(*keys), each.shown);
    EXPECT_EQ(mayBeReserved(*keys), each.mayBeReserved) << each.stored;
  }
}

TEST(KeyboardShortcutsTest, ReservesStoresAndKeepsWhatWorkedBefore) {
  const support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeDefaults defaults;
  support::FakeGlobalShortcuts desktop;
  const std::string name = toggleVisibility;
  defaults.set(name, std::string("CTRL+ALT+m"));
  int calls = 0;
  desktop.available.set(false); // as it is until a portal has answered
  KeyboardShortcuts shortcuts(desktop, defaults);
  shortcuts.onKeyUp(name, [&] { ++calls; });
  loop.advance(1s);
  EXPECT_TRUE(desktop.reserved.empty());
  desktop.words = "Press Meta";
  desktop.available.set(true);
  loop.advance(1s);
  EXPECT_EQ(shortcuts.state(name)->desktopText, "Press Meta");
  desktop.words = "";
  EXPECT_EQ(desktop.reserved[name].key, "m");
  desktop.performed.emit(name);
  EXPECT_EQ(calls, 1);
  {
    const auto recording = shortcuts.pause();
    desktop.performed.emit(name);
  }
  EXPECT_EQ(calls, 1);

  desktop.taken = "x";
  shortcuts.set(name, parseKeyCombination("CTRL+x"));
  loop.advance(1s);
  EXPECT_EQ(*shortcuts.state(name),
            (KeyboardShortcuts::State{parseKeyCombination("CTRL+ALT+m"), "Press Meta", "These are taken."}));
  EXPECT_EQ(defaults.string(name), "CTRL+ALT+m");

  // Somebody else has changed the file.
  defaults.set(name, std::string("CTRL+ALT+k"));
  loop.advance(1s);
  EXPECT_EQ(desktop.reserved[name].key, "k");
  EXPECT_EQ(shortcuts.state(name)->keys, parseKeyCombination("CTRL+ALT+k"));
  defaults.set(name, std::string("nonsense"));
  EXPECT_TRUE(desktop.reserved.empty());
  defaults.set(name, std::string("CTRL+ALT+m"));
  loop.advance(1s);

  shortcuts.set(name, parseKeyCombination("CTRL+y"));
  loop.advance(500ms);
  shortcuts.set(name, parseKeyCombination("CTRL+z"));
  loop.advance(1s);
  EXPECT_EQ(defaults.string(name), "CTRL+z") << "the answer for the keys before comes too late";
  EXPECT_EQ(*shortcuts.state(name), (KeyboardShortcuts::State{parseKeyCombination("CTRL+z")}));

  shortcuts.set(name, parseKeyCombination("CTRL+a"));
  shortcuts.set(name, std::nullopt);
  loop.advance(1s);
  EXPECT_TRUE(desktop.reserved.empty());
  EXPECT_EQ(defaults.string(name), std::nullopt);
  EXPECT_EQ(*shortcuts.state(name), KeyboardShortcuts::State());
}

} // namespace
} // namespace ondrel::shortcuts
