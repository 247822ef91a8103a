#include "UserHandsTest.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <sstream>

namespace ondrel::e2e {

namespace {

std::vector<std::string> linesOf(const std::string& command) {
  auto* pipe = popen(command.c_str(), "r");
  std::string output;
  std::array<char, 4096> part{};
  while (const auto length = std::fread(part.data(), 1, part.size(), pipe))
    output.append(part.data(), length);
  pclose(pipe);
  std::vector<std::string> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

// None when the window has gone.
std::optional<std::string> nameOf(unsigned long window) {
  const auto lines = linesOf("xdotool getwindowname " + std::to_string(window) + " 2>/dev/null");
  return lines.empty() ? std::nullopt : std::optional(lines.front());
}

} // namespace

void UserHandsTest::SetUp() {
  if (std::system("command -v xdotool >/dev/null") != 0)
    GTEST_SKIP() << "xdotool is missing";
  ProgramTest::SetUp();
}

std::vector<std::string> UserHandsTest::xdotool(const std::string& arguments) {
  auto lines = linesOf("xdotool " + arguments + " 2>/dev/null && echo done");
  // A failure halfway has lines too.
  if (lines.empty() || lines.back() != "done")
    return {};
  return lines;
}

void UserHandsTest::focus(const std::string& title) {
  EXPECT_TRUE(eventually([&] {
    return !xdotool("search --onlyvisible --class Ondrel search --name '" + title + "' windowfocus").empty();
  })) << title;
}

void UserHandsTest::focus(WindowId window) {
  EXPECT_FALSE(xdotool("windowfocus --sync " + std::to_string(window)).empty());
}

void UserHandsTest::press(const std::string& keys) {
  EXPECT_FALSE(xdotool("key " + keys).empty()) << keys;
}

void UserHandsTest::type(const std::string& text) {
  EXPECT_FALSE(xdotool("type '" + text + "'").empty()) << text;
}

void UserHandsTest::moveTo(WindowId window, int x, int y) {
  const auto id = std::to_string(window);
  const auto geometry = xdotool("getwindowgeometry --shell " + id);
  const auto width =
      std::ranges::find_if(geometry, [](const auto& line) { return line.starts_with("WIDTH="); });
  ASSERT_NE(width, geometry.end());
  if (x < 0)
    x += std::stoi(width->substr(6));
  EXPECT_FALSE(xdotool("windowraise " + id + " mousemove --window " + id + " " + std::to_string(x) + " " +
                       std::to_string(y))
                   .empty());
}

void UserHandsTest::click(WindowId window, int x, int y) {
  moveTo(window, x, y);
  EXPECT_FALSE(xdotool("click 1").empty());
}

std::set<UserHandsTest::WindowId> UserHandsTest::windows() {
  // A window that goes away while it is looked at makes the whole search fail, as if there were none.
  std::vector<std::string> lines;
  eventually([&] {
    lines = linesOf("xdotool search --onlyvisible --class Ondrel 2>&1");
    return std::ranges::none_of(lines, [](const auto& line) { return line.starts_with("X Error"); });
  });
  std::set<WindowId> result;
  for (const auto& line : lines) {
    const auto id = std::strtoul(line.c_str(), nullptr, 10); // of a complaint, none
    const auto name = nameOf(id);
    // A tooltip is a window of the display too; it bears the program's name.
    if (name && name != "Ondrel")
      result.insert(id);
  }
  return result;
}

std::string UserHandsTest::title(WindowId window) {
  return nameOf(window).value_or("");
}

UserHandsTest::WindowId UserHandsTest::windowBeside(const std::set<WindowId>& before) {
  std::vector<WindowId> added;
  eventually([&] {
    const auto now = windows();
    added.clear();
    std::ranges::set_difference(now, before, std::back_inserter(added));
    return added.size() == 1;
  });
  EXPECT_EQ(added.size(), 1U);
  return added.size() == 1 ? added.front() : 0;
}

UserHandsTest::WindowId UserHandsTest::signIn(Process& program) {
  EXPECT_TRUE(waitForPage(program)) << program.output();
  focus("Sign in.*");
  press("Tab Return");
  EXPECT_TRUE(waitForPage(program, 2)) << program.output();
  focus("Inbox.*");
  const auto all = windows();
  EXPECT_EQ(all.size(), 1U);
  return all.empty() ? 0 : *all.begin();
}

bool UserHandsTest::sessionBecomes(const std::function<bool(const app::PersistedSession&)>& holds) {
  return eventually([&] {
    const auto saved = session();
    return saved && holds(*saved);
  });
}

} // namespace ondrel::e2e
