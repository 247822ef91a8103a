#include "platform/linux/text/GlibLogSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace ondrel::platform {

namespace {

TEST(GlibLogSink, MakesOneSafeLineOfAnything) {
  const std::pair<std::string, std::string> cases[] = {
      {"plain äöü 😀", "plain äöü 😀"},
      {"two\nlines\r\tand\x1b[31m red", "two\\nlines\\x0d\\tand\\x1b[31m red"},
      {std::string("NUL\0here", 8), "NUL\uFFFDhere"},
      {"bad \xff\xc3(", "bad \uFFFD\uFFFD("},
      {"C1 \u009b and \u2028", "C1 \\x9b and \\u2028"},
  };
  for (const auto& [text, line] : cases)
    EXPECT_EQ(text::GlibLogSink::line("T", "ondrel[ui]", G_LOG_LEVEL_MESSAGE, text),
              "T ondrel[ui] notice: " + line + "\n");
  const auto cut = text::GlibLogSink::escaped(std::string(1 << 20, 'x'));
  EXPECT_LT(cut.size(), 70000U);
  EXPECT_TRUE(cut.ends_with(" [cut]"));
}

// Each runs in a process of its own, since GLib takes one log writer only.
class GlibLogSinkDeathTest : public testing::Test {
 protected:
  GlibLogSinkDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static void logAllLevels(const char* wanted) {
    setenv("ONDREL_LOG", wanted, 1);
    text::GlibLogSink::install("org.velmora.Ondrel");
    text::GlibLogSink::install("org.velmora.Ondrel");
    const base::Logger logger("network");
    logger.debug("one");
    logger.info("two");
    logger.notice("three {}", 3);
    logger.error("four");
    g_warning("from\nGLib");
    std::exit(0);
  }
};

TEST_F(GlibLogSinkDeathTest, FiltersByLevel) {
  using testing::AllOf;
  using testing::HasSubstr;
  using testing::Not;
  const auto always =
      AllOf(HasSubstr(" ondrel[network] notice: three 3\n"), HasSubstr(" ondrel[network] error: four\n"),
            HasSubstr(" warning: from\\nGLib\n"));
  const auto code = testing::ExitedWithCode(0);
  EXPECT_EXIT(logAllLevels("nonsense"), code, AllOf(always, Not(HasSubstr(": two\n"))));
  EXPECT_EXIT(logAllLevels("debug"), code,
              AllOf(always, HasSubstr(" info: two\n"), HasSubstr(" debug: one\n")));
}

} // namespace

} // namespace ondrel::platform
