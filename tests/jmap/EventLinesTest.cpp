#include "jmap/protocol/EventLines.h"

#include <gtest/gtest.h>

#include <string>

namespace ondrel::jmap {
namespace {

// Each line as a word: "data", "id=..." or "-", and what it names; "." for an empty one.
void append(std::string& text, const std::vector<EventLine>& lines) {
  for (const auto& line : lines)
    text += std::string(text.empty() ? "" : " ") +
            (line.isData    ? "data"
             : line.id      ? "id=" + *line.id
             : line.isEmpty ? "."
                            : "-") +
            (line.namesMailbox ? "+Mailbox" : "") + (line.namesEmail ? "+Email" : "");
}

// The lines of a stream that comes in chunks of this size.
std::string linesOf(std::string_view stream, std::size_t chunk) {
  EventLines splitter;
  std::string all;
  while (!stream.empty()) {
    append(all, splitter.feed(stream.substr(0, chunk)));
    stream.remove_prefix(std::min(chunk, stream.size()));
  }
  append(all, splitter.finish());
  return all;
}

TEST(EventLines, AreTheSameWhereverTheStreamIsCut) {
  using namespace std::string_literals;
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"\n", "."},
      {"\r\n", "."},
      {"\r\r\n\n", ". . ."},
      {"\n\r", ". ."},
      {"data:", "data"},
      {"data", "-"},
      {"dat\na:\n", "- -"},
      {" data:\"Email\"\n", "-+Email"},
      {": ping\n\ndata:x\n", "- . data"},
      {"data: {\"Mailbox\":1,\"Email\":2}\r\ndata:x\rdata:\"Email\"\n", "data+Mailbox+Email data data+Email"},
      {"data: \"Email\"\r\n\r\ndata: \"Mailbox\"\r\n", "data+Email . data+Mailbox"},
      {"id: a b\nid:\nid\nid:  x\ndata:1\nidx: 1\n id: 1\nID: 1\n", "id=a b id= id= id= x data - - -"},
      {"id: a\tb\nid: \0\nid:\x7F\nid:\xC3\xA4\n"s, "- - - id=\xC3\xA4"},
      {"\xEF\xBB\xBFid: " + std::string(256, 'i') + "\nid: " + std::string(257, 'i') + "\nid:2\n",
       "id=" + std::string(256, 'i') + " - id=2"},
      {"id:" + std::string(1 << 16, 'i') + "\nid:3\n", "- id=3"},
      {"data: Email \"EmailDelivery\" \"email\" Email\"\n", "data"},
      {"data: \"\"Email\"\n", "data+Email"},
      {"data: \"Mail\"Mailbox\"\n", "data+Mailbox"},
      {"data: \"Emai\"l\"Email\"", "data+Email"},
      {"data: \"Emai\nl\"\n", "data -"},
      {"\xEF\xBB\xBF"
       "data:\n\xEF\xBB\xBF"
       "data:\n",
       "data -"},
      {"data:\xE2\x80\xA8\xC2\x85\x0B\x0C\"Email\"\xFF\xC0\n", "data+Email"},
      {"data:\0\"Email\"\0\n"s, "data+Email"},
      {"data:" + std::string(1 << 16, '"') + "\"Email\"\n", "data+Email"},
  };
  for (const auto& [stream, expected] : cases)
    for (const std::size_t chunk : {1, 2, 3, 5, 7, 1000})
      EXPECT_EQ(linesOf(stream, chunk), expected) << stream.substr(0, 100) << " by " << chunk;
}

TEST(EventLines, ACarriageReturnEndsItsLineAtOnce) {
  EventLines splitter;
  EXPECT_EQ(splitter.feed("data:\r").size(), 1U);
  EXPECT_EQ(splitter.feed("\n").size(), 0U);
  EXPECT_EQ(splitter.feed("\n").size(), 1U);
  EXPECT_EQ(splitter.finish().size(), 0U);
}

} // namespace
} // namespace ondrel::jmap
