// A highlight from the user's hand to the file and back, with its mark in the list and its label on the
// server.
#include "HighlightHandsTest.h"

#include <boost/json/serialize.hpp>

#include <csignal>
#include <optional>
#include <sys/resource.h>
#include <thread>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class HighlightTest : public HighlightHandsTest {
 protected:
  std::size_t labelled(const std::string& value) const {
    return count(boost::json::serialize(askService("/control/jmap-requests")),
                 "\"mailboxIds/highlighted\":" + value);
  }

  // Where nothing is marked yet, the words' places depend on the fonts: looks down the page for one.
  std::optional<Place> highlightAWord(WindowId window) {
    constexpr int buttonAbove = 29;
    for (int y = 260; y < 620; y += 12)
      for (const int x : {-420, -390, -360}) {
        click(window, x, y);
        xdotool("click 1");
        std::this_thread::sleep_for(400ms);
        click(window, x, y - buttonAbove);
        if (eventually([this] { return saved() == 1; }, 400ms))
          return Place{x, y};
      }
    return std::nullopt;
  }
};

TEST_F(HighlightTest, ComesBackOnItsWordsAndGoesWithAClick) {
  write(defaultsFile(), R"({"_highlightTagEnabled":true})");
  Place place;
  {
    const auto program = start();
    const auto window = signIn(*program);
    ASSERT_NE(window, 0U) << program->output();
    ASSERT_TRUE(listens()) << program->output();
    press("j j j j");
    press("o");
    ASSERT_TRUE(sessionBecomes([](const auto& session) {
      return session.windows.at(0).tabs.at(0).urlString.contains("/mail/Inbox/T4.");
    })) << read(sessionFile());
    const auto found = highlightAWord(window);
    ASSERT_TRUE(found) << program->output();
    place = *found;
    EXPECT_TRUE(eventually([this] { return labelled("true") > 0; })) << program->output();
    std::this_thread::sleep_for(500ms);
    click(window, place.x, place.y);
    xdotool("click 1");
    std::this_thread::sleep_for(800ms);
    EXPECT_EQ(saved(), 1U);
    EXPECT_EQ(quit(*program), 0);
  }
  const auto written = read(file());
  EXPECT_TRUE(written.contains("\"threadId\":\"T4\"")) << written;

  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  ASSERT_TRUE(eventually([&] { return program->output().contains(" row(s) — 1 marked"); }))
      << program->output();
  const auto window = *windows().begin();
  focus(window);
  // The mark answers to a click as soon as the program knows which message stands there. Two clicks that come
  // as a double one select a word and leave it.
  EXPECT_TRUE(eventually(
      [&] {
        click(window, place.x, place.y);
        std::this_thread::sleep_for(800ms);
        return saved() == 0;
      },
      30s))
      << read(file()) << program->output();
  EXPECT_TRUE(eventually([this] { return labelled("null") > 0; })) << program->output();
  EXPECT_TRUE(eventually([&] { return program->output().contains(" row(s) — 0 marked"); }));
  EXPECT_EQ(quit(*program), 0);
}

// Every server but one on the same machine answers later than a quick hand.
TEST_F(HighlightTest, WaitsForTheServerAndStaysWithItsMessage) {
  Place place;
  {
    const auto program = start();
    const auto window = signIn(*program);
    ASSERT_NE(window, 0U) << program->output();
    ASSERT_TRUE(listens()) << program->output();
    press("j j j j");
    press("o");
    ASSERT_TRUE(sessionBecomes([](const auto& session) {
      return session.windows.at(0).tabs.at(0).urlString.contains("/mail/Inbox/T4.");
    }));
    const auto found = highlightAWord(window);
    ASSERT_TRUE(found) << program->output();
    place = *found;
    EXPECT_EQ(quit(*program), 0);
  }
  fs::remove(file());
  order("/control/fail", {{"path", "/jmap/api"}, {"kind", "delay"}, {"milliseconds", 2000}, {"count", 30}});
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  const auto window = *windows().begin();
  focus(window);
  highlightWord(window, place);
  press("j"); // to the conversation below
  EXPECT_TRUE(sessionBecomes(
      [](const auto& session) { return !session.windows.at(0).tabs.at(0).urlString.contains("/T4."); }));
  EXPECT_TRUE(eventually([this] { return saved() == 1; }, 30s)) << program->output();
  EXPECT_TRUE(savedHighlights().contains("M31@mail.example.org")) << read(file());
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(HighlightTest, WhatAFullDiskRefusesIsToldAndIsThereAfterAnEnd) {
  // A limit of nothing for files stands for the full disk; the log's file is hit by it too.
  std::signal(SIGXFSZ, SIG_IGN);
  const auto limitFiles = [](const Process& program, rlim_t bytes) {
    const rlimit limit{bytes, RLIM_INFINITY};
    return prlimit(program.id(), RLIMIT_FSIZE, &limit, nullptr) == 0;
  };
  const auto program = start();
  const auto window = signIn(*program);
  ASSERT_NE(window, 0U) << program->output();
  ASSERT_TRUE(listens()) << program->output();
  press("j j j j");
  press("o");
  ASSERT_TRUE(sessionBecomes([](const auto& session) {
    return session.windows.at(0).tabs.at(0).urlString.contains("/mail/Inbox/T4.");
  }));
  const auto place = highlightAWord(window);
  ASSERT_TRUE(place) << program->output();

  ASSERT_TRUE(limitFiles(*program, 0));
  click(window, place->x, place->y); // takes the mark away
  const auto alert = windowBeside({window});
  ASSERT_NE(alert, 0U);
  EXPECT_EQ(title(alert), "Your Changes Can't Be Saved");
  focus(alert);
  press("Return");
  EXPECT_TRUE(eventually([&] { return windows() == std::set{window}; }));
  EXPECT_EQ(saved(), 1U);
  ASSERT_TRUE(limitFiles(*program, RLIM_INFINITY));
  EXPECT_EQ(quit(*program), 0);
  EXPECT_TRUE(fs::exists(file()));
  EXPECT_EQ(saved(), 0U);
}

} // namespace
} // namespace ondrel::e2e
