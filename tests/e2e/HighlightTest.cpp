// Highlights under the user's hand, in the page, the file, the list and on the server, in the places where
// the application shows message bodies: alone, late among the messages of a conversation, in a frame of its
// own origin.
#include "HighlightHandsTest.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include <csignal>
#include <sys/resource.h>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;
using namespace std::chrono_literals;

struct Message {
  const char* name;
  const char* emailId;
  const char* threadId;
  const char* keys; // from the top of the list to it
  // The word to highlight, which the seventh conversation repeats in all its messages.
  const char* exact;
  const char* prefix;
  const char* suffix;
  int occurrenceIndex;
};

void PrintTo(const Message& message, std::ostream* stream) {
  *stream << message.name;
}

constexpr Message inTheFourth = {"Alone", "M31", "T4", "j j j j", "letters", "the stone. The ", " aaa", 0};
constexpr Message messages[] = {
    {"InAFrameOfTheServicesOrigin", "M33", "T6", "j j j j j j", "warden", "er wants to cross then asks the ",
     ", who has a boat of his own.", 0},
    {"LateAndTheThirdOfFive", "M36", "T7", "j j j j j j j", "oars", " the key hangs on the nail. The ",
     " are in the shed and dry.", 1},
};

constexpr auto id = "5f1c5a52-0d0c-4a53-9f0e-0a4c8d6f2b11";

json::object record(const Message& message) {
  return {{"threadId", message.threadId},
          {"exact", message.exact},
          {"prefix", message.prefix},
          {"suffix", message.suffix},
          {"occurrenceIndex", message.occurrenceIndex}};
}

std::string key(const Message& message) {
  return std::string(message.emailId) + "@mail.example.org";
}

// The file as an earlier run has left it.
std::string fileWith(const Message& message) {
  auto saved = record(message);
  saved["id"] = id;
  saved["createdAt"] = 785000000.5;
  return json::serialize(json::object{{key(message), json::array{saved}}});
}

using HighlightTest = HighlightHandsTest;

class HighlightPlacesTest : public HighlightHandsTest, public testing::WithParamInterface<Message> {
 protected:
  // Nobody has drawn it when the program sends what is highlighted in it.
  void makeLate() const {
    order("/control/fail", {{"path", std::string("/data/body/") + GetParam().emailId},
                            {"kind", "delay"},
                            {"milliseconds", 2500}});
  }
  bool isLabelled(const std::string& value) const {
    return eventually([&] {
      return json::serialize(askService("/control/jmap-requests"))
          .contains("\"mailboxIds/highlighted\":" + value);
    });
  }

  // Takes the mark away and highlights the word that stood under it: that must be the same again.
  void expectMarkOnItsWord(WindowId window) {
    const auto mark = waitForSpot(window, markColour);
    EXPECT_TRUE(spots(window, bannerColour).empty());
    click(window, mark.x, mark.y);
    ASSERT_TRUE(eventually([this] { return saved() == 0; })) << read(file());
    EXPECT_TRUE(eventually([&] { return spots(window, markColour).empty(); }));
    highlightWord(window, mark);
    ASSERT_TRUE(eventually([this] { return saved() == 1; }));
    const auto all = savedHighlights();
    ASSERT_TRUE(all.contains(key(GetParam()))) << json::serialize(all);
    auto made = all.at(key(GetParam())).at(0).as_object();
    EXPECT_TRUE(made.erase("id") == 1 && made.erase("createdAt") == 1);
    EXPECT_TRUE(made == record(GetParam())) << json::serialize(made);
  }
};

TEST_P(HighlightPlacesTest, MarksComeBackOnTheirWords) {
  write(file(), fileWith(GetParam()));
  write(defaultsFile(), R"({"_defaultClientCheck":false,"_highlightTagEnabled":true})");
  {
    const auto program = start();
    makeLate();
    expectMarkOnItsWord(openConversation(*program, GetParam().keys));
    const bool wasLate = program->output().contains(std::string("highlight: text not found for ") + id);
    EXPECT_EQ(wasLate, std::string(GetParam().threadId) == "T7");
    EXPECT_TRUE(isLabelled("null") && isLabelled("true")) << program->output();
    EXPECT_TRUE(eventually([&] { return program->output().contains(" row(s) — 0 marked"); }));
    EXPECT_EQ(quit(*program), 0);
  }
  makeLate();
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  const auto window = *windows().begin();
  focus(window);
  EXPECT_TRUE(eventually([&] { return program->output().contains(" row(s) — 1 marked"); }));
  expectMarkOnItsWord(window);
  EXPECT_EQ(quit(*program), 0);
}

INSTANTIATE_TEST_SUITE_P(Messages, HighlightPlacesTest, testing::ValuesIn(messages),
                         [](const auto& info) { return info.param.name; });

// Every server but one on the same machine answers later than a quick hand.
TEST_F(HighlightTest, WaitsForTheServerAndStaysWithItsMessage) {
  write(file(), fileWith(inTheFourth));
  Place place;
  {
    const auto program = start();
    place = waitForSpot(openConversation(*program, inTheFourth.keys), markColour);
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
  EXPECT_TRUE(savedHighlights().contains(key(inTheFourth))) << read(file());
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(HighlightTest, WhatAFullDiskRefusesIsToldAndIsThereAfterAnEnd) {
  // A limit of nothing for files stands for the full disk; the log's file is hit by it too.
  std::signal(SIGXFSZ, SIG_IGN);
  const auto limitFiles = [](const Process& program, rlim_t bytes) {
    const rlimit limit{bytes, RLIM_INFINITY};
    return prlimit(program.id(), RLIMIT_FSIZE, &limit, nullptr) == 0;
  };
  write(file(), fileWith(inTheFourth));
  const auto program = start();
  const auto window = openConversation(*program, inTheFourth.keys);
  const auto place = waitForSpot(window, markColour);

  ASSERT_TRUE(limitFiles(*program, 0));
  click(window, place.x, place.y); // takes the mark away
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
