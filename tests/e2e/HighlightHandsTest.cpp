#include "HighlightHandsTest.h"

#include <boost/json/parse.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace ondrel::e2e {

namespace {

using namespace std::chrono_literals;

struct Line {
  int top = 0;
  int bottom = 0;
  int left = 0;
  int right = 0;
  int pixels = 0;
};

} // namespace

boost::json::object HighlightHandsTest::savedHighlights() const {
  const auto text = read(file());
  return text.empty() ? boost::json::object() : boost::json::parse(text).as_object();
}

bool HighlightHandsTest::listens() const {
  return eventually([this] { return askService("/control/stream").at("listeners") == 1; }, listeningLimit);
}

UserHandsTest::WindowId HighlightHandsTest::openConversation(Process& program, const std::string& keys) {
  const auto window = signIn(program);
  EXPECT_TRUE(window != 0 && listens()) << program.output();
  press(keys);
  press("o");
  EXPECT_TRUE(sessionBecomes([](const auto& session) {
    return session.windows.at(0).tabs.at(0).urlString.contains("/mail/Inbox/T");
  })) << read(sessionFile());
  return window;
}

std::vector<HighlightHandsTest::Place> HighlightHandsTest::spots(WindowId window,
                                                                 const Colour& colour) const {
  constexpr int fewest = 24;   // pixels; a letter's edge is no spot
  constexpr int widestGap = 4; // rows inside one line
  constexpr int header = 3;    // lines before the pixels
  const auto image = profile / "window.ppm";
  const auto command =
      fmt::format("timeout 10 import -window {} -depth 8 'ppm:{}' >/dev/null 2>&1", window, image.string());
  const auto bytes = std::system(command.c_str()) == 0 ? read(image) : std::string();
  int width = 0;
  int height = 0;
  if (std::sscanf(bytes.c_str(), "P6 %d %d 255", &width, &height) != 2)
    return {};
  std::size_t begin = 0;
  for (int i = 0; i < header; ++i)
    begin = bytes.find('\n', begin) + 1;
  const auto hasColour = [&](int x, int y) {
    const auto at = begin + 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                 static_cast<std::size_t>(x));
    return at + 3 <= bytes.size() && std::ranges::equal(colour, std::string_view(bytes).substr(at, 3), {}, {},
                                                        [](char c) { return static_cast<std::uint8_t>(c); });
  };
  std::vector<Line> lines;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      if (!hasColour(x, y))
        continue;
      if (lines.empty() || y - lines.back().bottom > widestGap)
        lines.push_back({.top = y, .bottom = y, .left = x, .right = x});
      auto& line = lines.back();
      line.bottom = y;
      line.left = std::min(line.left, x);
      line.right = std::max(line.right, x);
      ++line.pixels;
    }
  std::erase_if(lines, [](const Line& line) { return line.pixels < fewest; });
  std::vector<Place> places;
  for (const auto& line : lines)
    places.push_back({(line.left + line.right) / 2, (line.top + line.bottom) / 2});
  return places;
}

HighlightHandsTest::Place HighlightHandsTest::waitForSpot(WindowId window, const Colour& colour) const {
  std::vector<Place> found;
  EXPECT_TRUE(eventually([&] {
    found = spots(window, colour);
    return !found.empty();
  })) << fmt::format("nothing has the colour {:02x}", fmt::join(colour, ""));
  return found.empty() ? Place() : found.front();
}

void HighlightHandsTest::highlightWord(WindowId window, const Place& word) {
  constexpr Colour buttonColour{0x22, 0x22, 0x22};
  constexpr int nearest = 14; // pixels above the word's middle
  constexpr int farthest = 44;
  constexpr auto doubleClickTime = 500ms; // the toolkit has 400
  constexpr int attempts = 3;             // a busy machine may tear the two clicks apart
  moveTo(window, word.x, word.y);
  Place button;
  const auto findButton = [&] {
    for (const auto& spot : spots(window, buttonColour))
      if (word.y - spot.y > nearest && word.y - spot.y < farthest)
        button = {word.x, spot.y};
    return button.y != 0;
  };
  bool isThere = false;
  for (int i = 0; i < attempts && !isThere; ++i) {
    // A click that went before, wherever it was, is counted with these two unless it was long ago.
    std::this_thread::sleep_for(doubleClickTime);
    xdotool("click --repeat 2 --delay 50 1");
    isThere = eventually(findButton, 7s);
  }
  ASSERT_TRUE(isThere) << "the button must come";
  click(window, button.x, button.y);
}

} // namespace ondrel::e2e
