#include "JmapFixture.h"
#include "LineClient.h"

#include <gmock/gmock.h>

namespace ondrel::demo {

namespace json = boost::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class EventStreamsTest : public JmapFixture {
 protected:
  LineClient listen(const std::string& query, const std::string& headers = {}) {
    return LineClient(service_.webPort(), "GET /jmap/event/?" + query + " HTTP/1.1\r\nHost: localhost\r\n" +
                                              headers + "Authorization: Bearer " + token_ + "\r\n\r\n");
  }
  // The types that the next event names.
  std::string nextTypes(LineClient& client) {
    const auto event = client.until("\n\n");
    const std::string start = "event: state\ndata: ";
    EXPECT_THAT(event, StartsWith(start));
    const auto idAt = event.find("\nid: ");
    lastEventId_ = event.substr(idAt + 5, event.size() - idAt - 7);
    const auto value = json::parse(event.substr(start.size(), idAt - start.size()));
    EXPECT_EQ(value.at("@type"), "StateChange");
    std::string types;
    for (const auto& [type, state] : value.at("changed").at(mail).as_object())
      types += std::string(types.empty() ? "" : ",") + std::string(type);
    return types;
  }
  std::size_t listeners() {
    return json::parse(fetch({control("stream")}).body).at("listeners").to_number<std::size_t>();
  }

  std::string lastEventId_; // of the last event that nextTypes() has seen
};

TEST_F(EventStreamsTest, TellsEveryListenerWhatHasChanged) {
  auto both = listen("types=Mailbox,Email&closeafter=no&ping=30");
  auto mailboxes = listen("types=Mailbox&closeafter=no&ping=0");
  auto all = listen("types=*&closeafter=no&ping=0");
  for (auto* client : {&both, &mailboxes, &all}) {
    EXPECT_THAT(client->until("\r\n\r\n"),
                AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("text/event-stream")));
  }
  EXPECT_EQ(nextTypes(both), "Mailbox,Email");
  EXPECT_EQ(nextTypes(mailboxes), "Mailbox");
  EXPECT_EQ(nextTypes(all), "Mailbox,Email,Thread");
  EXPECT_FALSE(both.hasMore());

  deliver(R"({"count": 5})");
  EXPECT_EQ(nextTypes(both), "Mailbox,Email");
  EXPECT_EQ(nextTypes(mailboxes), "Mailbox");
  EXPECT_EQ(nextTypes(all), "Mailbox,Email,Thread");
  EXPECT_FALSE(both.hasMore()) << "five at once are one event";

  answer("Email/set", R"({"update": {"M1": {"keywords/x": true}}})");
  EXPECT_EQ(nextTypes(all), "Mailbox,Email");
  EXPECT_EQ(listeners(), 3u);
  all.close();
  while (listeners() == 3u) {
  }
  fetch({web("/data/read"), "POST", {{"Cookie", signIn()}}, R"({"threadId": "T1"})"});
  nextTypes(both);
  EXPECT_EQ(nextTypes(both), "Mailbox,Email") << "what the pages do is told as well";
}

TEST_F(EventStreamsTest, SaysNoMoreThanItMustOnOrder) {
  order("stream", R"({"action": "terse"})");
  auto client = listen("types=Mailbox,Email&closeafter=no&ping=0");
  client.until("\r\n\r\n");
  EXPECT_FALSE(client.hasMore());
  deliver("{}");
  EXPECT_EQ(nextTypes(client), "Email");

  const auto known = "Last-Event-ID: " + lastEventId_ + "\r\n";
  auto nothingMissed = listen("types=*&closeafter=no&ping=0", known);
  nothingMissed.until("\r\n\r\n");
  EXPECT_FALSE(nothingMissed.hasMore());
  answer("Email/set", R"({"update": {"M1": {"keywords/x": true}}})");
  for (const auto& [headers, types] :
       {std::pair(known, "Email"), std::pair(std::string("Last-Event-ID: 7\r\n"), "Email,Thread")}) {
    auto again = listen("types=*&closeafter=no&ping=0", headers);
    again.until("\r\n\r\n");
    EXPECT_EQ(nextTypes(again), types);
  }
  order("reset", "{}");
  auto other = listen("types=*&closeafter=no&ping=0", known);
  other.until("\r\n\r\n");
  EXPECT_EQ(nextTypes(other), "Mailbox,Email");
}

TEST_F(EventStreamsTest, EndsAfterAStateWhenAskedTo) {
  auto once = listen("types=Email&closeafter=state&ping=0");
  once.until("\r\n\r\n");
  EXPECT_EQ(nextTypes(once), "Email");
  EXPECT_TRUE(once.ends());
  EXPECT_FALSE(once.wasReset());
  EXPECT_EQ(listeners(), 0u);
  for (const char* query : {"", "types=Email&closeafter=later", "types=Email&ping=-1", "types=Email&ping=x"})
    EXPECT_EQ(get(std::string("/jmap/event/?") + query).status, 400u) << query;
}

TEST_F(EventStreamsTest, IsDroppedSilencedAndWrittenToOnOrder) {
  auto client = listen("types=Email&closeafter=no&ping=1");
  client.until("\r\n\r\n");
  EXPECT_EQ(nextTypes(client), "Email");
  EXPECT_EQ(client.until("\n\n"), "event: ping\ndata: {\"interval\":1}\n\n");

  order("stream", R"({"action": "silence"})");
  deliver("{}");
  auto late = listen("types=Email&closeafter=no&ping=0");
  late.until("\r\n\r\n");
  EXPECT_FALSE(client.hasMore());
  EXPECT_FALSE(late.hasMore());
  order("stream", R"({"action": "raw", "data": ": a\r\n\rdata: \"Email\"", "base64": "AP8K"})");
  EXPECT_EQ(client.until("\xff\n"), std::string(": a\r\n\rdata: \"Email\"\0\xff\n", 22));
  late.until("\xff\n");
  order("stream", R"({"action": "resume"})");
  EXPECT_EQ(nextTypes(late), "Email");
  EXPECT_EQ(nextTypes(client), "Email") << "of the delivery in the silence";

  const auto large = std::string(1'000'000, 'x');
  order("stream", R"({"action": "raw", "data": "data: )" + large + R"(\n\n"})");
  EXPECT_THAT(client.until("\n\n"), HasSubstr("data: " + large));

  EXPECT_EQ(json::parse(order("stream", R"({"action": "drop"})").body).at("listeners"), 2);
  client.until("never");
  EXPECT_TRUE(client.ends());
  EXPECT_FALSE(client.wasReset());
  auto again = listen("types=Email&closeafter=no&ping=0");
  again.until("\n\n");
  order("stream", R"({"action": "reset"})");
  again.until("never");
  EXPECT_TRUE(again.wasReset());
  EXPECT_EQ(order("stream", R"({"action": "explode"})").status, 400u);
}

TEST_F(EventStreamsTest, SurvivesAListenerThatReadsNothing) {
  auto stalled = listen("types=Email&closeafter=no&ping=0");
  while (listeners() == 0u) {
  }
  for (int i = 0; i < 20; ++i)
    order("stream", R"({"action": "raw", "data": ")" + std::string(1'000'000, 'y') + "\"}");
  EXPECT_EQ(get("/jmap/session").status, 200u);
  order("stream", R"({"action": "raw", "data": "the end"})");
  EXPECT_GE(stalled.until("the end").size(), 20'000'000u);
}

TEST_F(EventStreamsTest, TakesAConnectionAfterADelayToo) {
  order("fail", R"({"path": "/jmap/event/", "kind": "delay", "milliseconds": 20})");
  auto client = listen("types=Email&closeafter=no&ping=0");
  EXPECT_THAT(client.until("\r\n\r\n"), HasSubstr("text/event-stream"));
  EXPECT_EQ(nextTypes(client), "Email");
  order("fail", R"({"path": "/jmap/event/", "kind": "cut"})");
  auto uncut = listen("types=Email&closeafter=no&ping=0");
  EXPECT_THAT(uncut.until("\r\n\r\n"), HasSubstr("text/event-stream"));
}

} // namespace ondrel::demo
