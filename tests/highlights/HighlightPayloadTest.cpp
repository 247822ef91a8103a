#include "highlights/file/HighlightPayload.h"

#include "base/Base64.h"

#include <gtest/gtest.h>

#include <map>

namespace ondrel::highlights {
namespace {

using State = PayloadDecoder::State;

std::string base64(std::string_view text) {
  return base::base64Encoded({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

struct Decoded {
  State state = State::working;
  std::vector<ExportedHighlight> highlights;
  int steps = 0;
};

Decoded decode(const std::string& payload) {
  PayloadDecoder decoder(payload);
  Decoded result;
  for (; result.state == State::working; ++result.steps)
    result.state = decoder.step();
  result.highlights = decoder.take();
  return result;
}

ExportedHighlight sample(std::string id) {
  return {"<1@x>",
          {.id = std::move(id),
           .threadId = "T1",
           .exact = std::string("a\"\\\0</script>\xF0\x9F\x98\x80]},", 21),
           .prefix = "[{\"",
           .suffix = "\\\\\"",
           .occurrenceIndex = 3,
           .createdAt = 757382400.125,
           .quote = HighlightQuote{"a b", "c \"d\"", ""}}};
}

TEST(HighlightPayload, IsFoundAsTheExpressionTells) {
  const std::string id = R"(id="ondrel-highlights-data")";
  const std::map<std::string, std::optional<std::string>> cases = {
      {"<p>" + id + ">x</script>", "x"},
      {id + ">a>b\n c</script>", "a>b\n c"},
      {id + "\n < \"\n>x</script>", "x"},
      {id + "></script>", std::nullopt},
      {id + ">x</script", std::nullopt},
      {id + ">x<b></script>", std::nullopt},
      {id, std::nullopt},
      {"ID=\"ondrel-highlights-data\">x</script>", std::nullopt},
      // A false beginning doesn't hide the real one.
      {id + ">x<b>" + id + ">y</script>", "y"},
      {id + id + ">z</script>", "z"},
      {id + ">" + id + ">z</script>", id + ">z"},
  };
  for (const auto& [document, payload] : cases)
    EXPECT_EQ(findPayload(document), payload) << document;
}

TEST(HighlightPayload, IsFoundInLinearTime) {
  const std::string id = R"(id="ondrel-highlights-data")";
  // What a backtracking or restarting search would look at again and again, for hours.
  for (const auto& [repeated, end] : {std::pair(id, ""), {id, ">x<"}, {id + ">", "<"}}) {
    std::string document;
    while (document.size() < 20'000'000)
      document += repeated;
    EXPECT_EQ(findPayload(document + end), std::nullopt);
  }
}

TEST(HighlightPayload, GoesThereAndBackInSmallSteps) {
  std::vector<ExportedHighlight> highlights(1000, sample("h"));
  highlights.push_back(sample(R"(x"] , [data-a="\)"));
  highlights.push_back(sample(""));
  const auto payload = encodedPayload(highlights);
  EXPECT_EQ(payload.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
            payload.npos);
  const auto decoded = decode(payload);
  EXPECT_EQ(decoded.state, State::done);
  EXPECT_EQ(decoded.highlights, highlights);
  EXPECT_GE(decoded.steps, 1000);
  EXPECT_EQ(encodedPayload({}), base64("[]"));
}

TEST(HighlightPayload, IsDecodedStrictly) {
  const std::string good =
      R"({"messageId":"1@x","highlight":{"id":"h","threadId":"T","exact":"e","prefix":"",)"
      R"("suffix":"","occurrenceIndex":0,"createdAt":1}})";
  const auto with = [&](const std::string& part, const std::string& other) {
    auto text = good;
    return "[" + text.replace(text.find(part), part.size(), other) + "]";
  };
  const std::pair<std::string, std::size_t> accepted[] = {
      {" [ \n" + good + "\t,\r\n " + good + " ] \n", 2},
      {with(R"("createdAt":1)", R"("createdAt":1.5e3,"more":[{"a":"]}\"["}])"), 1},
      {" [ ] ", 0},
  };
  for (const auto& [json, count] : accepted) {
    const auto decoded = decode(base64(json));
    EXPECT_EQ(decoded.state, State::done) << json;
    EXPECT_EQ(decoded.highlights.size(), count) << json;
  }
  const std::string corrupted[] = {
      with(R"(,"createdAt":1)", ""),
      with(R"("messageId":"1@x",)", ""),
      with(R"("1@x")", "1"),
      with(R"("e")", R"("\ud800")"),
      "[" + good + ",{}]",
      "[" + good + ",]",
      "[" + good + " " + good + "]",
      "[" + good,
      "[" + good + "] x",
      "[" + good + "}",
      "[" + good + ",\"",
      "[\"\\",
      good,
      "",
      std::string(1 << 20, '['),
      "[" + std::string(100'000, '{') + "]",
      "[" + good.substr(0, good.size() - 2) + ",\"more\":\"" + std::string(17 << 20, 'x') + "\"}}]",
  };
  for (const auto& json : corrupted) {
    const auto decoded = decode(base64(json));
    EXPECT_TRUE(decoded.state == State::corrupted && decoded.highlights.empty()) << json.substr(0, 300);
  }

  for (const auto* notBase64 : {"W10", "W10=\n", "W1-_", "W1==", "W10=W10="})
    EXPECT_EQ(decode(notBase64).state, State::notBase64) << notBase64;
  // Padding in the middle, where one slice ends, and something that is none behind a good beginning.
  const auto megabyte = base64(std::string(786'430, ' '));
  ASSERT_EQ(megabyte.size(), 1U << 20);
  ASSERT_TRUE(megabyte.ends_with('='));
  EXPECT_EQ(decode(megabyte + base64("[]")).state, State::notBase64);
  EXPECT_EQ(decode(base64("x" + std::string(786'431, ' ')) + "!").state, State::notBase64);
  EXPECT_EQ(decode(base64("[" + std::string(786'431, ' ')) + base64("]")).state, State::done);
}

} // namespace
} // namespace ondrel::highlights
