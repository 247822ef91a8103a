#include "ServiceFixture.h"

namespace ondrel::demo {

class EventStreamsTest : public ServiceFixture {
 protected:
  Client listen(const std::string& types, const std::string& headers = {}, const std::string& ping = "0") {
    auto client = ask("GET", "/jmap/event/?types=" + types + "&closeafter=no&ping=" + ping, headers + token_);
    EXPECT_THAT(client.until("\r\n\r\n"), HasSubstr("text/event-stream"));
    return client;
  }
  // The types that the next event names.
  std::string nextTypes(Client& client) {
    const auto event = client.until("\n\n");
    const std::string start = "event: state\ndata: ";
    EXPECT_THAT(event, StartsWith(start));
    const auto idAt = event.find("\nid: ");
    lastEventId_ = "Last-Event-ID: " + event.substr(idAt + 5, event.size() - idAt - 7) + "\r\n";
    const auto value = json::parse(event.substr(start.size(), idAt - start.size()));
    std::string types;
    for (const auto& [type, state] : value.at("changed").at(mail).as_object())
      types += std::string(type) + " ";
    return types;
  }
  json::value listeners() { return asked("stream").at("listeners"); }

  std::string lastEventId_; // of the last event that nextTypes() has seen, as a header
};

TEST_F(EventStreamsTest, TellsEveryListenerWhatHasChanged) {
  auto both = listen("Mailbox,Email");
  auto mailboxes = listen("Mailbox", "", "1");
  EXPECT_EQ(nextTypes(both), "Mailbox Email ");
  EXPECT_EQ(nextTypes(mailboxes), "Mailbox ");
  deliver(R"({"count": 5})");
  EXPECT_EQ(nextTypes(both), "Mailbox Email ");
  EXPECT_EQ(nextTypes(mailboxes), "Mailbox ");
  EXPECT_FALSE(both.hasMore()) << "five at once are one event";
  act("read", R"({"threadId": "T1"})");
  EXPECT_EQ(nextTypes(both), "Mailbox Email ") << "what the pages do is told as well";
  nextTypes(mailboxes);
  EXPECT_EQ(mailboxes.until("\n\n"), "event: ping\ndata: {\"interval\":1}\n\n");

  EXPECT_EQ(listeners(), 2);
  both.close();
  while (listeners() != 1)
    mailboxes.hasMore();
  order("stream", R"({"action": "drop"})");
  EXPECT_EQ(mailboxes.until("never"), "");
  EXPECT_EQ(listeners(), 0);
  EXPECT_EQ(get("/jmap/event/?types=Email&closeafter=no&ping=x", token_).status, 400U);
}

TEST_F(EventStreamsTest, SaysNoMoreThanItMustOnOrder) {
  order("stream", R"({"action": "terse"})");
  auto client = listen("Mailbox,Email");
  EXPECT_FALSE(client.hasMore());
  deliver("{}");
  EXPECT_EQ(nextTypes(client), "Email ");

  const auto known = lastEventId_;
  auto nothingMissed = listen("Mailbox,Email", known);
  EXPECT_FALSE(nothingMissed.hasMore());
  deliver("{}");
  for (const auto& headers : {known, std::string("Last-Event-ID: 7\r\n")}) {
    auto again = listen("Mailbox,Email", headers);
    EXPECT_EQ(nextTypes(again), "Email ");
  }
  order("reset");
  auto other = listen("Mailbox,Email", known);
  EXPECT_EQ(nextTypes(other), "Mailbox Email ");
}

TEST_F(EventStreamsTest, BeginsAfterADelayToo) {
  order("fail", R"({"path": "/jmap/event/", "kind": "delay", "milliseconds": 20})");
  auto client = listen("Email");
  EXPECT_EQ(nextTypes(client), "Email ");
}

} // namespace ondrel::demo
