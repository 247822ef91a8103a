#include "platform/linux/text/IcuTextFormatting.h"

#include <gtest/gtest.h>

#include <chrono>
#include <utility>

namespace ondrel::platform {

namespace {

using namespace std::chrono;

TEST(TextFormatting, ShowsDatesInTheUsersLanguageAndZone) {
  const auto time = sys_days(2025y / January / 5) + 23h + 5min + 59s + 999ms;
  const auto shown = [&](const char* locale, const char* zone) {
    return text::IcuTextFormatting(locale, zone).mediumDateShortTime(time);
  };
  EXPECT_EQ(shown("de_DE.UTF-8", "Europe/Berlin"), "06.01.2025, 00:05");
  EXPECT_EQ(shown("ja_JP", "Asia/Tokyo"), "2025/01/06 8:05");
  const auto date = [&](const char* locale, const char* zone) {
    return text::IcuTextFormatting(locale, zone).mediumDate(time);
  };
  EXPECT_EQ(date("de_DE.UTF-8", "Europe/Berlin"), "06.01.2025");
  EXPECT_EQ(date("C.UTF-8", "America/New_York"), "Jan 5, 2025");
  // The kind of space before "PM" is a matter of the data's version.
  for (const auto* locale : {"en_US.UTF-8", "C", "POSIX", "C.UTF-8"}) {
    const auto text = shown(locale, "America/New_York");
    EXPECT_TRUE(text.starts_with("Jan 5, 2025, 6:05")) << text;
    EXPECT_TRUE(text.ends_with("PM")) << text;
  }
  EXPECT_FALSE(text::IcuTextFormatting("nonsense", "Nowhere/At_All").mediumDateShortTime(time).empty());
  EXPECT_FALSE(text::IcuTextFormatting().mediumDateShortTime(time).empty());
}

TEST(TextFormatting, CountsCharactersAsPeopleSeeThem) {
  const text::IcuTextFormatting formatting("en_US.UTF-8", "UTC");
  const std::string family = "👨‍👩‍👧", thumb = "👍🏽", flag = "🇩🇪", accent = "e\u0301";
  const auto all = family + thumb + flag + accent + "x\r\n";
  EXPECT_EQ(formatting.firstCharacters(all, 0), "");
  EXPECT_EQ(formatting.firstCharacters(all, 3), family + thumb + flag);
  EXPECT_EQ(formatting.firstCharacters(all, 5), family + thumb + flag + accent + "x");
  EXPECT_EQ(formatting.firstCharacters(all, 6), all);
  // Bytes that are no UTF-8 do no harm.
  EXPECT_LE(formatting.firstCharacters("\xff\xC3\xF0\x9F", 2).size(), 4U);
}

} // namespace

} // namespace ondrel::platform
