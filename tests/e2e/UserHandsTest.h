#pragma once

#include "ProgramTest.h"

#include <set>
#include <string>
#include <vector>

namespace ondrel::e2e {

// The program under a user's hands: keys and clicks go through the display.
class UserHandsTest : public ProgramTest {
 protected:
  using WindowId = unsigned long;

  // Skips the test where nothing can press keys.
  void SetUp() override;

  // Runs xdotool and gives its lines; none when it has failed.
  static std::vector<std::string> xdotool(const std::string& arguments);

  // There is no window manager that would give the keyboard to a new window.
  static void focus(const std::string& title);
  static void focus(WindowId window);
  // To the window that has the keyboard. Keys of one call are all on their way before the page acts on the
  // first.
  static void press(const std::string& keys);
  static void type(const std::string& text);
  // At a place inside a window, which is raised for it; x counts from its right edge when it is negative.
  static void moveTo(WindowId window, int x, int y);
  static void click(WindowId window, int x, int y);

  // The program's top-levels on the screen, panels among them.
  static std::set<WindowId> windows();
  static std::string title(WindowId window);
  // The window that has come since, as soon as it is the only one; 0 when none comes.
  static WindowId windowBeside(const std::set<WindowId>& before);

  // Signs in on the page that the program has opened with, and gives its window with the inbox in the focus.
  WindowId signIn(Process& program);

  bool sessionBecomes(const std::function<bool(const app::PersistedSession&)>& holds);
};

} // namespace ondrel::e2e
