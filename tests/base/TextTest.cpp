#include "base/Text.h"
#include "base/Base64.h"
#include "base/Json.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>

#include <limits>

namespace ondrel::base {
namespace {

TEST(Text, TellsValidUtf8) {
  struct Case {
    std::string_view text;
    bool valid;
  };
  const Case cases[] = {
      {"", true},
      {"plain", true},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", true},
      {"\xC3", false},             // cut
      {"\xE2\x82", false},         // cut
      {"\x80", false},             // a continuation alone
      {"\xC0\xAF", false},         // overlong "/"
      {"\xE0\x80\xAF", false},     // overlong
      {"\xED\xA0\x80", false},     // surrogate
      {"\xF4\x90\x80\x80", false}, // above U+10FFFF
      {"\xFF", false},
      {"a\xC3(", false},
  };
  for (const auto& each : cases)
    EXPECT_EQ(isValidUtf8(each.text), each.valid) << testing::PrintToString(each.text);
}

TEST(Text, ParsesWholeIntegersOnly) {
  const std::pair<std::string_view, std::optional<long long>> cases[] = {
      {"0", 0},
      {"-7", -7},
      {"+7", 7},
      {"100", 100},
      {"", {}},
      {"+", {}},
      {"+-7", {}},
      {" 7", {}},
      {"7 ", {}},
      {"7.0", {}},
      {"0x10", {}},
      {"9223372036854775807", 9223372036854775807LL},
      {"9223372036854775808", {}},
      {"seven", {}},
  };
  for (const auto& [text, value] : cases)
    EXPECT_EQ(parsedInteger(text), value) << text;
}

TEST(Text, MakesDisplayLinesHarmless) {
  EXPECT_EQ(displayLine("a\nb\tc\x7F"), "a b c ");
  // Right-to-left override, zero width space and byte order mark don't reach the eye.
  EXPECT_EQ(displayLine("exe.\xE2\x80\xAEgpj\xE2\x80\x8B\xEF\xBB\xBF"), "exe.gpj");
  EXPECT_EQ(displayLine("a\xFFz"), "a\xEF\xBF\xBDz");
  EXPECT_EQ(displayLine("h\xC3\xA9"), "h\xC3\xA9");
}

TEST(Text, MakesFileNamesSafe) {
  const std::pair<std::string, std::string> cases[] = {
      {"report.pdf", "report.pdf"},
      {"../../etc/passwd", "-..-etc-passwd"},
      {"..", "fallback"},
      {"", "fallback"},
      {".bashrc", "bashrc"},
      {"a/b\\c", "a-b-c"},
      {"  x  ", "x"},
      {std::string("a\0b", 3), "a b"},
      {"\xE2\x80\xAE"
       "fdp.exe",
       "fdp.exe"},
  };
  for (const auto& [name, safe] : cases)
    EXPECT_EQ(safeFileName(name, "fallback"), safe) << name;
}

TEST(Text, CutsLongFileNamesAtACharacterAndKeepsTheExtension) {
  std::string name;
  for (int i = 0; i < 200; ++i)
    name += "\xC3\xA9";
  const auto safe = safeFileName(name + ".pdf", "fallback");
  EXPECT_LE(safe.size(), 240U);
  EXPECT_GE(safe.size(), 239U);
  EXPECT_TRUE(safe.ends_with("\xC3\xA9.pdf"));
  EXPECT_TRUE(isValidUtf8(safe));
}

TEST(Base64, IsStrictBothWays) {
  for (const std::string text : {"", "f", "fo", "foo", "foob", "fooba", "foobar"}) {
    const Bytes bytes(text.begin(), text.end());
    EXPECT_EQ(base64Decoded(base64Encoded(bytes)), bytes) << text;
  }
  EXPECT_EQ(base64Encoded(Bytes{'f', 'o', 'o', 'b', 0xFF}), "Zm9vYv8=");
  for (const auto* text : {"Zg", "Zg=", "Zh==", "Zm9v\n", "Z===", "====", "Zm9=", "Zm-v", "=Zm9", "Zg==Zg=="})
    EXPECT_FALSE(base64Decoded(text)) << text;
}

TEST(Json, WritesNumbersAsPeopleDo) {
  const boost::json::value value = {{"zoom", 1.1},
                                    {"one", 1.0},
                                    {"big", 9007199254740993},
                                    {"text", "a\"\n\xE2\x80\xA8"},
                                    {"empty", boost::json::array()}};
  const auto text = jsonText(value);
  EXPECT_TRUE(text.starts_with(R"({"zoom":1.1,"one":1.0,"big":9007199254740993,"text":"a\"\n)")) << text;
  EXPECT_TRUE(text.ends_with(R"("empty":[]})")) << text;
  EXPECT_EQ(boost::json::parse(text).at("text"), value.at("text"));
  EXPECT_EQ(jsonText(std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(jsonText({{"a", {1, 2}}}, 2), "{\n  \"a\": [\n    1,\n    2\n  ]\n}");
}

} // namespace
} // namespace ondrel::base
