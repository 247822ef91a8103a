#include "jmap/EventLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ondrel::jmap {

void PrintTo(const EventLine& line, std::ostream* out) {
  *out << (line.isData ? "data" : "other") << (line.namesMailbox ? "+Mailbox" : "")
       << (line.namesEmail ? "+Email" : "");
}

namespace {

using Lines = std::vector<EventLine>;

constexpr EventLine other{};
constexpr EventLine data{.isData = true};
constexpr EventLine mailbox{.isData = true, .namesMailbox = true};
constexpr EventLine email{.isData = true, .namesEmail = true};
constexpr EventLine both{.isData = true, .namesMailbox = true, .namesEmail = true};

// The lines of a stream that comes in chunks of this size.
Lines linesOf(std::string_view stream, std::size_t chunk) {
  EventLines splitter;
  Lines all;
  while (!stream.empty()) {
    for (const auto& line : splitter.feed(stream.substr(0, chunk)))
      all.push_back(line);
    stream.remove_prefix(std::min(chunk, stream.size()));
  }
  for (const auto& line : splitter.finish())
    all.push_back(line);
  return all;
}

TEST(EventLines, AreTheSameWhereverTheStreamIsCut) {
  using namespace std::string_literals;
  struct Case {
    std::string stream;
    Lines expected;
  };
  const Case cases[] = {
      {"", {}},
      {"\n", {other}},
      {"\r\n", {other}},
      {"\r\r\n\n", {other, other, other}},
      {"\n\r", {other, other}},
      {"data:\n", {data}},
      {"data:", {data}},
      {"data", {other}},
      {"dat\na:\n", {other, other}},
      {" data:\"Email\"\n", {{.namesEmail = true}}},
      {"event: \"Email\"\n", {{.namesEmail = true}}},
      {": ping\n\ndata:x\n", {other, other, data}},
      {"data: {\"Mailbox\":1,\"Email\":2}\r\ndata:x\rdata:\"Email\"\n", {both, data, email}},
      {"data: \"Email\"\r\n\r\ndata: \"Mailbox\"\r\n", {email, other, mailbox}},
      {"data: Email \"EmailDelivery\" \"email\" Email\"\n", {data}},
      {"data: \"\"Email\"\n", {email}},
      {"data: \"Mail\"Mailbox\"\n", {mailbox}},
      {"data: \"Emai\"l\"Email\"", {email}},
      {"data: \"Ema\nil\"\n", {data, other}},
      {"data: \"Email\n\"\n", {data, other}},
      {"\xEF\xBB\xBF"
       "data:\n\xEF\xBB\xBF"
       "data:\n",
       {data, other}},
      {"data:\xE2\x80\xA8\xC2\x85\x0B\x0C\"Email\"\xFF\xC0\n", {email}},
      {"data:\0\"Email\"\0\n"s, {email}},
  };
  for (const auto& [stream, expected] : cases)
    for (const std::size_t chunk : {1, 2, 3, 5, 7, 1000})
      EXPECT_EQ(linesOf(stream, chunk), expected) << testing::PrintToString(stream) << " by " << chunk;
}

TEST(EventLines, ACarriageReturnEndsItsLineAtOnce) {
  EventLines splitter;
  EXPECT_EQ(splitter.feed("data:\r"), Lines{data});
  EXPECT_EQ(splitter.feed("\n"), Lines{});
  EXPECT_EQ(splitter.feed("\n"), Lines{other});
  EXPECT_EQ(splitter.finish(), Lines{});
}

TEST(EventLines, ALineOfAnyLengthIsReadToItsEnd) {
  const std::string stream = "data:" + std::string(1 << 20, '"') + "\"Email\"\n";
  EXPECT_EQ(linesOf(stream, 65536), Lines{email});
}

} // namespace
} // namespace ondrel::jmap
