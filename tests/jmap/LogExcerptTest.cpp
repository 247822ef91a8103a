#include "jmap/protocol/LogExcerpt.h"
#include "base/Base64.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ondrel::jmap {
namespace {

std::string letters(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i)
    text += static_cast<char>('a' + i * 7 % 26);
  return text;
}

TEST(LogExcerpt, LeavesOutWhatAServerCouldRepeat) {
  const auto secrets = secretsOf("Bearer to/ken", "a=1; sid=value-of-8; long=value-of-8-and-more; flag; b=");
  const std::pair<const char*, const char*> cases[] = {
      {"Bearer to/ken!", "Bearer <private>!"},
      {R"("to\/ken")", R"("<private>")"},
      {"?t=to%2Fken&u=%74%6f%2f%6B%65%6e.", "?t=<private>&u=<private>."},
      {R"("t\u006f\u002Fken")", R"("<private>")"},
      {"to%2Fke, to%2, %, \\", "to%2Fke, to%2, %, \\"},
      {"a=1 and 1", "<private> and 1"},
      {"value-of-8, value-of-8-and-more", "<private>, <private>"},
      {"sid=value-of-8to/kento/ken", "<private><private><private>"},
      {"b=, flag", "<private>, flag"}};
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(redactedStart(text, 1000, secrets), expected) << text;
  EXPECT_EQ(redactedStart("abcdef", 3, secretsOf("", "")), "abc");
}

TEST(LogExcerpt, FindsASecretInBase64) {
  const std::string token = "s3cret/t0ken~~\xff\xfe?>";
  const auto secrets = secretsOf("Bearer " + token, "");
  for (const auto* before : {"", "a", "ab", "Bearer ", "u:"})
    for (const auto* behind : {"", "!", "!!", ", and so on"}) {
      const auto whole = before + token + behind;
      auto text = base::base64Encoded({reinterpret_cast<const std::uint8_t*>(whole.data()), whole.size()});
      const auto shown = redactedStart(text, 1000, secrets);
      EXPECT_TRUE(shown.contains("<private>")) << text;
      std::ranges::replace(text, '/', '_');
      std::ranges::replace(text, '+', '-');
      EXPECT_TRUE(redactedStart("?" + text, 1000, secrets).contains("<private>")) << text;
      // What is left of it at both ends tells no more than the neighbours.
      EXPECT_LE(shown.size(), std::string("<private>").size() + 4 * (whole.size() - token.size() + 5) / 3)
          << shown;
    }
}

TEST(LogExcerpt, ShowsNoPartOfASecretWhereverTheTextIsCut) {
  const auto token = letters(200);
  const auto secrets = secretsOf("Bearer " + token, "");
  for (std::size_t before = 0; before < 500; before += 7)
    for (const int repetitions : {1, 2, 5, 20}) {
      std::string text(before, '.');
      for (int i = 0; i < repetitions; ++i)
        text += token + "|";
      const auto shown = redactedStart(text, 400, secrets);
      EXPECT_LE(shown.size(), 400U);
      EXPECT_FALSE(shown.contains(token.substr(0, 10))) << before << " " << repetitions;
    }
}

} // namespace
} // namespace ondrel::jmap
