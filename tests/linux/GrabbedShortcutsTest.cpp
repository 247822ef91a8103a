#include "platform/linux/windows/GrabbedShortcuts.h"
#include "DesktopTest.h"

#include <X11/Xlib.h>

#include <cstdlib>

namespace ondrel::platform {

namespace {

class GrabbedShortcutsTest : public DesktopTest {
 protected:
  std::string reserve(windows::GrabbedShortcuts& shortcuts, const std::string& name, KeyCombination keys) {
    std::optional<std::expected<std::string, std::string>> answer;
    scope.spawn(ask(shortcuts, name, std::move(keys), answer));
    until([&] { return answer.has_value(); });
    return answer && *answer ? "" : answer ? answer->error() : "no answer";
  }
  static async::Task<void> ask(windows::GrabbedShortcuts& shortcuts, std::string name, KeyCombination keys,
                               std::optional<std::expected<std::string, std::string>>& answer) {
    auto result = co_await shortcuts.reserve(std::move(name), std::move(keys));
    answer = std::move(result);
  }
  static void type(const std::string& keys) { EXPECT_EQ(std::system(("xdotool key " + keys).c_str()), 0); }

  async::Scope scope;
};

TEST_F(GrabbedShortcutsTest, AreHeardWhateverTheLockKeysAreAtAndRefusedWhenTaken) {
  run([this] {
    windows::GrabbedShortcuts shortcuts;
    std::string log;
    const auto performed = shortcuts.performed.subscribe([&](const std::string& name) { log += name; });
    const KeyCombination controlAltM{.control = true, .alt = true, .key = "m"};
    EXPECT_EQ(reserve(shortcuts, "a", controlAltM), "");
    EXPECT_EQ(reserve(shortcuts, "a", controlAltM), "") << "the same once more";
    for (const auto* locks : {"", "Num_Lock", "Caps_Lock", "Num_Lock"}) {
      log.clear();
      if (*locks)
        type(locks);
      type("ctrl+alt+m");
      EXPECT_TRUE(until([&] { return log == "a"; })) << locks << log;
    }
    type("Caps_Lock");
    log.clear();
    type("ctrl+m ctrl+shift+alt+m");
    settle();
    EXPECT_EQ(log, "");

    auto* other = XOpenDisplay(nullptr);
    const auto code = XKeysymToKeycode(other, XStringToKeysym("k"));
    XGrabKey(other, code, ControlMask | LockMask, DefaultRootWindow(other), False, GrabModeAsync,
             GrabModeAsync);
    XSync(other, False);
    EXPECT_EQ(reserve(shortcuts, "a", {.control = true, .key = "k"}),
              "Another program has these keys. Choose other keys.");
    EXPECT_EQ(reserve(shortcuts, "a", {.control = true, .key = "hiragana"}),
              "This keyboard has no such key. Choose other keys.");
    type("ctrl+alt+m");
    EXPECT_TRUE(until([&] { return log == "a"; })) << "those from before stay";
    XCloseDisplay(other);
    EXPECT_EQ(reserve(shortcuts, "a", {.control = true, .key = "k"}), "") << "it has gone, with its keys";
    log.clear();
    shortcuts.release("a");
    type("ctrl+alt+m ctrl+k");
    settle();
    EXPECT_EQ(log, "");
  });
}

TEST_F(GrabbedShortcutsTest, FollowNumLockToAnotherModifier) {
  run([this] {
    windows::GrabbedShortcuts shortcuts;
    bool heard = false;
    const auto performed = shortcuts.performed.subscribe([&](const std::string&) { heard = true; });
    EXPECT_EQ(reserve(shortcuts, "a", {.control = true, .alt = true, .key = "m"}), "");
    auto* other = XOpenDisplay(nullptr);
    const auto numLock = XKeysymToKeycode(other, XStringToKeysym("Num_Lock"));
    const auto move = [&](int from, int to) {
      auto* map = XGetModifierMapping(other);
      map = XInsertModifiermapEntry(XDeleteModifiermapEntry(map, numLock, from), numLock, to);
      EXPECT_EQ(XSetModifierMapping(other, map), MappingSuccess);
      XFreeModifiermap(map);
      settle();
    };
    move(Mod2MapIndex, Mod3MapIndex);
    type("Num_Lock");
    type("ctrl+alt+m");
    EXPECT_TRUE(until([&] { return heard; }));
    type("Num_Lock");
    move(Mod3MapIndex, Mod2MapIndex);
    XCloseDisplay(other);
  });
}

} // namespace

} // namespace ondrel::platform
