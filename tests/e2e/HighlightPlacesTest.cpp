// Marks in the places where the application shows message bodies: among other messages of a conversation,
// drawn late, and in a frame of its own origin.
#include "HighlightHandsTest.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

namespace ondrel::e2e {
namespace {

namespace json = boost::json;

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

constexpr Message messages[] = {
    {"InAFrameOfTheServicesOrigin", "M33", "T6", "j j j j j j", "warden", "er wants to cross then asks the ",
     ", who has a boat of his own.", 0},
    {"LateAndTheThirdOfFive", "M36", "T7", "j j j j j j j", "oars", " the key hangs on the nail. The ",
     " are in the shed and dry.", 1},
};

class HighlightPlacesTest : public HighlightHandsTest, public testing::WithParamInterface<Message> {
 protected:
  static constexpr auto id = "5f1c5a52-0d0c-4a53-9f0e-0a4c8d6f2b11";

  // Nobody has drawn it when the program sends what is highlighted in it.
  void makeLate() const {
    order("/control/fail", {{"path", std::string("/data/body/") + GetParam().emailId},
                            {"kind", "delay"},
                            {"milliseconds", 2500}});
  }

  static json::object record() {
    const auto& message = GetParam();
    return {{"threadId", message.threadId},
            {"exact", message.exact},
            {"prefix", message.prefix},
            {"suffix", message.suffix},
            {"occurrenceIndex", message.occurrenceIndex}};
  }
  static std::string key() { return std::string(GetParam().emailId) + "@mail.example.org"; }

  // Takes the mark away and highlights the word that stood under it: that must be the same again.
  void expectMarkOnItsWord(WindowId window) {
    const auto mark = waitForSpots(window, markColour);
    EXPECT_TRUE(spots(window, bannerColour).empty());
    click(window, mark.x, mark.y);
    ASSERT_TRUE(eventually([this] { return saved() == 0; })) << read(file());
    EXPECT_TRUE(eventually([&] { return spots(window, markColour).empty(); }));
    highlightWord(window, mark);
    ASSERT_TRUE(eventually([this] { return saved() == 1; }));
    const auto all = savedHighlights();
    ASSERT_TRUE(all.contains(key())) << json::serialize(all);
    auto made = all.at(key()).at(0).as_object();
    EXPECT_TRUE(made.erase("id") == 1 && made.erase("createdAt") == 1);
    EXPECT_TRUE(made == record()) << json::serialize(made);
  }
};

TEST_P(HighlightPlacesTest, MarksComeBackOnTheirWords) {
  auto before = record();
  before["id"] = id;
  before["createdAt"] = 785000000.5;
  write(file(), json::serialize(json::object{{key(), json::array{before}}}));
  write(defaultsFile(), R"({"_defaultClientCheck":false})");
  {
    const auto program = start();
    const auto window = signIn(*program);
    ASSERT_NE(window, 0U) << program->output();
    ASSERT_TRUE(listens()) << program->output();
    makeLate();
    press(GetParam().keys);
    press("o");
    expectMarkOnItsWord(window);
    const bool wasLate = program->output().contains(std::string("highlight: text not found for ") + id);
    EXPECT_EQ(wasLate, std::string(GetParam().threadId) == "T7");
    EXPECT_EQ(quit(*program), 0);
  }
  makeLate();
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  const auto window = *windows().begin();
  focus(window);
  expectMarkOnItsWord(window);
  EXPECT_EQ(quit(*program), 0);
}

INSTANTIATE_TEST_SUITE_P(Messages, HighlightPlacesTest, testing::ValuesIn(messages),
                         [](const auto& info) { return info.param.name; });

} // namespace
} // namespace ondrel::e2e
