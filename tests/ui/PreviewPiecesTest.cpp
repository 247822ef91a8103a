#include "ui/preview/PageSelection.h"
#include "ui/preview/PreviewText.h"

#include <gmock/gmock.h>

namespace ondrel::ui {
namespace {

using namespace std::string_view_literals;

TEST(PreviewTextTest, ReadsTheUsualEncodings) {
  struct Case {
    std::string_view bytes;
    bool isCut;
    std::optional<std::string_view> text;
  };
  const Case cases[] = {
      {"", false, ""},
      {"na\xC3\xAFve", false, "naïve"},
      {"na\xC3\xAF\xE2\x82", true, "naï"}, // the beginning of a longer file
      {"\xEF\xBB\xBFmark", false, "mark"},
      {"\xFF\xFEh\0i\0"sv, false, "hi"},
      {"\xFE\xFF\0h\0i"sv, false, "hi"},
      {"\xFF\xFEh\0i"sv, true, "hi"},
      {"\xFF\xFE\0\0h\0\0\0"sv, false, "h"},
      {"Z\xFCrich, K\xF6ln und die sch\xF6ne Stra\xDF"
       "e",
       false, "Zürich, Köln und die schöne Straße"},
      {"\x7F"
       "ELF\2\1\0\0\0\0\0\xFF"sv,
       false, std::nullopt},
  };
  for (const auto& each : cases) {
    const auto text = previewText(each.bytes, each.isCut);
    EXPECT_EQ(text.has_value(), each.text.has_value()) << each.bytes;
    if (text && each.text && each.bytes == "\xFF\xFEh\0i"sv)
      EXPECT_TRUE(text->starts_with("h")) << *text; // half a character at the end
    else if (text && each.text)
      EXPECT_EQ(*text, *each.text);
  }
  const auto broken = previewText(std::string(20'000, 'x') + "\nend", false);
  EXPECT_EQ(std::ranges::count(broken.value_or(""), '\n'), 5);
}

TEST(PageSelectionTest, TakesWhatIsBetweenTwoPlaces) {
  // "ab" above "cd", with an end of line that has no room.
  const platform::PageText text{U"ab\ncd",
                                {{0.1F, 0.1F, 0.2F, 0.2F},
                                 {0.2F, 0.1F, 0.3F, 0.2F},
                                 {0.3F, 0.1F, 0.3F, 0.2F},
                                 {0.1F, 0.3F, 0.2F, 0.4F},
                                 {0.2F, 0.3F, 0.3F, 0.4F}}};
  const auto between = [&](PagePoint from, PagePoint to) {
    return selectedText(text, textBetween(text, from, to));
  };
  EXPECT_EQ(between({0.25, 0.15}, {0.15, 0.35}), "b\nc");
  EXPECT_EQ(between({0.15, 0.35}, {0.25, 0.15}), "b\nc") << "upwards";
  EXPECT_EQ(between({0.0, 0.0}, {0.9, 0.15}), "ab") << "beside the line";
  EXPECT_EQ(between({-5, -5}, {5, 5}), "ab\ncd");
  EXPECT_EQ(selectedText(text, textFrom(text, {0.25, 0.15})), "b\ncd") << "on to the next page";
  EXPECT_EQ(selectedText(text, textUpTo(text, {0.15, 0.35})), "ab\nc") << "from the page before";
  EXPECT_EQ(lineBoxes(text, {0, 5}).size(), 2U);
  EXPECT_EQ(selectedText({}, textBetween({}, {}, {})), "");
}

} // namespace
} // namespace ondrel::ui
