#pragma once

#include "UserHandsTest.h"

#include <boost/json/object.hpp>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace ondrel::e2e {

// A user who highlights. What is marked is found by its colour on the screen, whatever the fonts are.
class HighlightHandsTest : public UserHandsTest {
 protected:
  using Colour = std::array<std::uint8_t, 3>;
  static constexpr Colour markColour{0xff, 0xe0, 0x66};
  static constexpr Colour bannerColour{0xff, 0xf3, 0xcd};

  struct Place {
    int x = 0;
    int y = 0;
  };

  static constexpr std::chrono::seconds listeningLimit{40};

  std::filesystem::path file() const { return profile / "data/ondrel/highlights.json"; }
  std::size_t saved() const { return count(read(file()), "\"createdAt\""); }
  // The file as JSON, an empty object when there is none.
  boost::json::object savedHighlights() const;
  // Whether the program's own mail client has found the sign-in.
  bool listens() const;
  // Signs in, and opens what these keys lead to from the top of the list.
  WindowId openConversation(Process& program, const std::string& keys);

  // The middles of what has this colour in a window, from the top on; one for each line.
  std::vector<Place> spots(WindowId window, const Colour& colour) const;
  // The first of them, as soon as there is one.
  Place waitForSpot(WindowId window, const Colour& colour) const;

  // Selects the word there and presses the button that comes above it.
  void highlightWord(WindowId window, const Place& word);
};

} // namespace ondrel::e2e
