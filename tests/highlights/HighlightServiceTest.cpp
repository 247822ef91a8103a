#include "HighlightWorld.h"
#include "highlights/ContainerReport.h"
#include "highlights/file/HighlightAnchor.h"
#include "jmap/mail/MessageURL.h"

#include <limits>

namespace ondrel::highlights {
namespace {

using namespace std::chrono_literals;
using HighlightServiceTest = HighlightWorld;

TEST_F(HighlightServiceTest, ContainersAreCountedFromTheOpenMessage) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  using Cards = std::vector<std::int64_t>;
  const auto plain = [](std::int64_t count, std::optional<std::int64_t> focused) {
    return ContainerReport{.count = count, .focusedIndex = focused};
  };
  const auto cards = [](std::int64_t cardCount, Cards indexes, std::optional<std::int64_t> focused) {
    return ContainerReport{.count = static_cast<std::int64_t>(indexes.size()),
                           .focusedIndex = 0,
                           .cardCount = cardCount,
                           .cardIndexes = std::move(indexes),
                           .focusedCard = focused};
  };
  // The open message, the report, and what stands in the containers, "-" for an unknown message.
  const std::tuple<std::string, ContainerReport, std::string> cases[] = {
      {"3", plain(3, 1), "234"},
      {"0", plain(1, {}), "0"},
      {"3", plain(2, {}), "01"},
      {"0", plain(7, 1), "-01234-"},
      {"4", plain(3, 0), "4--"},
      {"x", plain(2, 1), "01"},
      {"0", plain(least, 0), ""},
      {"4", plain(2, least), "--"},
      {"0", plain(2, most), "--"},
      {"0", plain(2, -3), "34"},
      {"3", plain(1, {}), "3"}, // alone in view, it is the open one
      // An earlier message that is opened while others stay folded.
      {"4", cards(5, {1, 4}, 4), "14"},
      {"2", cards(5, {0, 3}, 1), "03"},
      {"2", cards(1, {0}, {}), "2"},
      {"1", cards(7, {0, 6}, 1), "0-"},
      {"1", cards(5, {-1, 1, 99}, 1), "-1-"},
      {"0", cards(5, {-1, -1}, 0), "01"},
      {"4", cards(2, {least, most}, 1), "--"},
  };
  std::vector<jmap::ThreadEmailInfo> thread;
  for (const auto* message : {"0", "1", "2", "3", "4"})
    thread.push_back({message, message});
  for (const auto& [open, report, expected] : cases) {
    std::string ids;
    for (const auto& id : containerMessageIds(report, thread, open))
      ids += id.value_or("-");
    EXPECT_EQ(ids, expected) << open;
  }
  EXPECT_LE(containerMessageIds(plain(most, {}), thread, "0").size(), 10'000U);
  thread[1].messageId.clear();
  EXPECT_EQ(containerMessageIds(plain(2, {}), thread, "0")[1], std::nullopt) << "it has no Message-ID";
}

TEST_F(HighlightServiceTest, WhatAnAddressNames) {
  const std::pair<std::string, std::optional<jmap::MessageAddress>> cases[] = {
      {"https://app.example.com/mail/Inbox/T1.M2.3?u=1", {{"T1", "M2"}}},
      {"https://app.example.com/mail/Inbox/T1", {{"T1", ""}}},
      {"https://app.example.com/mail/Inbox/T1.M2/", {{"T1", "M2"}}},
      {"https://app.example.com/mail/.M2", {}},
      {"not an address", {}},
      {"https://app.example.com/mail/%FF.M2", {}},
      {"https://app.example.com/mail/a%20b.c", {{"a b", "c"}}}};
  for (const auto& [url, expected] : cases)
    EXPECT_EQ(jmap::MessageAddress::of(url), expected) << url;
}

TEST_F(HighlightServiceTest, AnchorsNeedAllTheirKeys) {
  const auto with = [](std::string_view exact, std::string_view prefix) {
    return R"({"id":"h","exact":")" + std::string(exact) + R"(","prefix":")" + std::string(prefix) +
           R"(","suffix":"\ud83d","occurrenceIndex":0})";
  };
  const auto halved =
      HighlightAnchor::decode(with("a\\\\ud800 \\ud83d\\ude00", "\\ude00b\\uD83D\\u0041\\n\\ud83dc"));
  ASSERT_TRUE(halved) << "prefix and suffix are cut anywhere";
  EXPECT_EQ(halved->exact, "a\\ud800 \xF0\x9F\x98\x80");
  EXPECT_EQ(halved->prefix, "bA\nc");
  EXPECT_EQ(halved->suffix, "");
  EXPECT_FALSE(HighlightAnchor::decode(with("a\\ud800", "b"))) << "could not be found again";

  for (const auto* key : {"id", "exact", "prefix", "suffix", "occurrenceIndex"}) {
    auto lacking = boost::json::parse(anchor("h")).as_object();
    lacking.erase(key);
    EXPECT_FALSE(HighlightAnchor::decode(boost::json::serialize(lacking))) << key;
    lacking[key] = 0.5;
    EXPECT_FALSE(HighlightAnchor::decode(boost::json::serialize(lacking))) << key;
  }
  const auto halfId = R"({"exact":"","prefix":"","suffix":"","occurrenceIndex":0,"id":"\ud83d"})";
  for (const auto* broken : {"", "\\", "{\"id\":\"\\ud8", "{\"id\":\"\\", "\xFF", halfId})
    EXPECT_FALSE(HighlightAnchor::decode(broken)) << broken;
}

TEST_F(HighlightServiceTest, EachReportIsAnsweredWithTheWholeList) {
  store.add({"h1", "T1", "words", "", "", 0, 1.5}, "b@x");
  store.add({"h2", "T1", "words", "", "", 0, 1.5}, "b@x");
  store.add({"h3", "T1", "words", "", "", 0, 1.5}, "c@x");
  answerThread({"M1 a@x", "M2 b@x", "M3 c@x"});
  open("T1", "M2");
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "2"}, {"focusedIndex", "0"}});
  EXPECT_EQ(sentAnchors(), "nothing") << "no frame is ready";
  post({{"type", "ondrelHighlightHostReady"}});
  EXPECT_EQ(sentAnchors(), R"([["h1","h2"],["h3"]])");
  EXPECT_TRUE(page->evaluations.back().contains(
      R"({"id":"h1","threadId":"T1","exact":"words","prefix":"","suffix":"","occurrenceIndex":0,"createdAt":1.5})"));
  ASSERT_TRUE(page->evaluationFrames.back());
  EXPECT_EQ(page->evaluationFrames.back()->id, 7U);

  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "3"}, {"focusedIndex", ""}});
  EXPECT_EQ(sentAnchors(), R"([[],["h1","h2"],["h3"]])");
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "0"}});
  EXPECT_EQ(sentAnchors(), "[]") << "clears what the page has";
}

// An empty frame of the service's took the other's place.
TEST_F(HighlightServiceTest, EachFrameAnswersForItself) {
  showThread();
  store.add({"h1", "T1", "words", "", "", 0, 1.5}, "a@x");
  store.add({"h2", "T1", "words", "", "", 0, 1.5}, "c@x");
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "0"}});
  clear();
  for (const std::uint64_t empty : {1, 8}) {
    postAlone({{"type", "ondrelHighlightContainersChanged"}, {"count", "0"}, {"report", "1"}}, empty);
    shell.settle();
  }
  EXPECT_EQ(sentAnchors(), "nothing");
  // Each message in a frame of its own, and a second document in one of them.
  showCards("1", "M2", "0", "3", 9);
  shell.settle();
  EXPECT_EQ(sentAnchors(), R"([["h1"]])");
  showCards("1", "M2", "1", "3", 10);
  showCards("1", "M2", "2", "3", 10);
  shell.settle();
  EXPECT_EQ(sentAnchors(), R"([["h2"]])");
  EXPECT_EQ(page->evaluationFrames.back()->id, 10U);
  EXPECT_TRUE(page->evaluations.back().ends_with(",1)")) << "names what it answers";
  open("T1", "M3");
  shell.settle();
  EXPECT_EQ(page->evaluationFrames.at(page->evaluationFrames.size() - 2)->id, 9U) << "all of them";
  postAlone({{"type", "ondrelHighlightCreate"}, {"anchorJSON", anchor("h3")}, {"containerIndex", "0"}}, 9);
  EXPECT_EQ(ids("a@x"), (Lines{"h1", "h3"}));
}

TEST_F(HighlightServiceTest, TheListOfAThreadIsFetchedWhenItMustBe) {
  showThread();
  open("T1", "M3");
  shell.settle();
  EXPECT_TRUE(requests().empty()) << "only the focus has moved";
  EXPECT_EQ(sentAnchors(), "[[],[],[]]");

  answerThread({"M1 a@x", "M2 b@x", "M3 c@x", "M4 d@x"});
  open("T1", "M4");
  shell.settle();
  EXPECT_EQ(requests(), (Lines{"Thread/get", "Email/get"})) << "a new message of the same thread";
  answerThread({"N1 n@x"});
  open("T2", "N1");
  clear();
  open("T1", "M4");
  shell.settle();
  EXPECT_TRUE(requests().empty()) << "known from before";

  // The way to the server fails for a while.
  clear();
  store.add({"h1", "T3", "words", "", "", 0, 1.5}, "o@x");
  for (int i = 0; i < 2; ++i)
    client.failNext({jmap::JMAPError::Kind::transport, "down"});
  answerThread({"O1 o@x"});
  open("T3", "O1");
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "1"}});
  EXPECT_EQ(sentAnchors(), "nothing") << "nothing is known of it yet";
  shell.loop.advance(60s);
  EXPECT_EQ(sentAnchors(), R"([["h1"]])") << "it is asked again";
}

// A notification's address ends in the email's id, and the page completes it later.
TEST_F(HighlightServiceTest, AnAddressMayNameTheEmailAlone) {
  client.answer("Email/get", support::FakeJMAPClient::reply(
                                 {R"({"list":[{"id":"M2","threadId":"T1","mailboxIds":{"B1":true}}]})"}));
  client.answer("Mailbox/get", support::FakeJMAPClient::reply({R"({"list":[{"id":"B1","name":"Inbox"}]})"}));
  client.answer("Thread/get",
                support::FakeJMAPClient::reply({R"({"list":[{"id":"T1","emailIds":["M1","M2"]}]})"}));
  client.answer("Email/get",
                support::FakeJMAPClient::reply(
                    {R"({"list":[{"id":"M1","messageId":["a@x"]},{"id":"M2","messageId":["b@x"]}]})"}));
  tab->urlString.set("https://app.example.com/mail/Inbox/M2?u=1");
  showCards("1", "M2", "1", "2");
  create("h1", "0", "1");
  EXPECT_EQ(store.highlights("b@x").at(0).threadId, "T1");
  tab->urlString.set("https://app.example.com/mail/Inbox/T1.M2?u=1");
  clear();
  showCards("2", "M2", "0,1", "2");
  create("h2", "0", "2");
  EXPECT_EQ(ids("a@x"), Lines{"h2"});
  EXPECT_TRUE(requests().empty());
}

// Loopback answers before anybody can press a button: what was made in one conversation went to the one
// before it.
TEST_F(HighlightServiceTest, WhatIsMadeWhileTheServerIsAskedWaits) {
  showThread();
  std::vector<std::string> notices;
  const auto noticed =
      tab->noticed.subscribe([&](const web::PageNotice& notice) { notices.push_back(notice.text); });
  client.delay = 1s;
  client.answer("Thread/get",
                support::FakeJMAPClient::reply({R"({"list":[{"id":"T2","emailIds":["N1","N2"]}]})"}));
  client.fail("Thread/get", {jmap::JMAPError::Kind::transport, "down"});
  client.answer("Email/get",
                support::FakeJMAPClient::reply(
                    {R"({"list":[{"id":"N1","messageId":["n@x"]},{"id":"N2","messageId":["o@x"]}]})"}));
  tab->urlString.set("https://app.example.com/mail/Inbox/T2.N2?u=1");
  showCards("1", "N2", "0,1", "2");
  shell.settle();
  create("h1", "1", "1");
  create("h2", "0", "1");
  post({{"type", "ondrelHighlightRemove"}, {"highlightId", "h2"}, {"containerIndex", "0"}, {"report", "1"}});
  // Meanwhile the user goes on.
  tab->urlString.set("https://app.example.com/mail/Inbox/T3.O1?u=1");
  showCards("2", "O1", "0", "1");
  shell.settle();
  create("h3", "0", "2");
  create("h4", "1", "1");
  EXPECT_TRUE(store.allHighlights().empty());
  shell.loop.advance(3s);
  EXPECT_EQ(ids("o@x"), (Lines{"h1", "h4"})) << "each in the message that it was made in";
  EXPECT_EQ(store.highlights("o@x").at(0).threadId, "T2");
  shell.loop.advance(10min);
  EXPECT_EQ(store.allHighlights().size(), 2U);
  EXPECT_EQ(page->evaluations.back(), R"(window.__ondrelRemoveHighlights(["h3"]))") << "doesn't stay unsaved";
  EXPECT_EQ(notices.size(), 1U);

  // Elements of a conversation that stay in view while the next one's address has come.
  showCards("3", "N2", "0,1", "2");
  tab->urlString.set("https://app.example.com/mail/Inbox/T1.M2?u=1");
  post({{"type", "ondrelMessageChanged"}, {"internalId", "M2"}});
  create("h5", "1", "1");
  EXPECT_EQ(ids("o@x"), (Lines{"h1", "h4", "h5"}));
  EXPECT_TRUE(ids("b@x").empty());
}

TEST_F(HighlightServiceTest, WhatThePageMakesIsSaved) {
  showThread();
  const auto before = std::chrono::system_clock::now().time_since_epoch() - 978307200s;
  create("h1", "2");
  const auto saved = store.highlights("c@x").at(0);
  EXPECT_EQ(saved, (PersistedHighlight{"h1", "T1", "words", "p", "s", 3, saved.createdAt}));
  EXPECT_NEAR(saved.createdAt, std::chrono::duration<double>(before).count(), 60);
  EXPECT_EQ(page->evaluations, Lines{R"(window.__ondrelApplyMailboxHighlightMarks(["T1"]))"})
      << "the page has its anchors already";

  clear();
  create("h2", "3");
  create("h2", "-1");
  post({{"type", "ondrelHighlightCreate"}, {"anchorJSON", "{}"}, {"containerIndex", "0"}});
  postAlone({{"type", "ondrelHighlightCreate"}, {"anchorJSON", anchor("h2")}, {"containerIndex", "0"}}, 99);
  shell.settle();
  EXPECT_EQ(store.allHighlights().size(), 1U);
  EXPECT_EQ(page->evaluations.size(), 3U) << "the marks are taken off again";
}

TEST_F(HighlightServiceTest, RemovesAndClears) {
  showThread();
  for (const auto* id : {"h1", "h2", "h3", "h4"})
    create(id, "1");
  clear();
  const auto remove = [&](std::string_view container) {
    post({{"type", "ondrelHighlightRemove"}, {"highlightId", "h1"}, {"containerIndex", container}});
  };
  const auto clearOrphaned = [&](std::string_view idsJSON, std::string_view container) {
    post({{"type", "ondrelHighlightClearOrphaned"}, {"idsJSON", idsJSON}, {"containerIndex", container}});
  };
  remove("-1");
  remove("3");
  for (const auto* broken : {"", "[\"h2\",null]", "[\"h2\""})
    clearOrphaned(broken, "1");
  clearOrphaned("[\"h2\"]", "5");
  EXPECT_EQ(ids("b@x").size(), 4U);
  EXPECT_TRUE(page->evaluations.empty());

  std::vector<web::PageNotice> notices;
  const auto noticed =
      tab->noticed.subscribe([&](const web::PageNotice& notice) { notices.push_back(notice); });
  remove("1");
  EXPECT_EQ(ids("b@x"), (Lines{"h2", "h3", "h4"}));
  ASSERT_EQ(notices.size(), 1U);
  for (int i = 0; i < 2; ++i)
    notices[0].act();
  shell.settle();
  EXPECT_EQ(ids("b@x"), (Lines{"h2", "h3", "h4", "h1"})) << "brought back";
  EXPECT_EQ(sentAnchors(), R"([[],["h2","h3","h4","h1"],[]])");
  remove("1");
  clearOrphaned(R"(["h2","unknown","h4"])", "1");
  EXPECT_EQ(ids("b@x"), Lines{"h3"});
}

TEST_F(HighlightServiceTest, MessagesThatLackSomethingAreIgnored) {
  showThread();
  create("h1", "0");
  clear();
  const boost::json::value messages[] = {
      {{"type", "ondrelMessageChanged"}},
      {{"type", "ondrelHighlightContainersChanged"}},
      {{"type", "ondrelHighlightContainersChanged"}, {"count", "99999999999999999999"}},
      {{"type", "ondrelHighlightCreate"}, {"anchorJSON", anchor("x")}, {"containerIndex", "1.0"}},
      {{"type", "ondrelHighlightCreate"}, {"containerIndex", "0"}},
      {{"type", "ondrelHighlightRemove"}, {"containerIndex", "0"}},
      {{"type", "ondrelHighlightClearOrphaned"}, {"idsJSON", "[\"h1\"]"}, {"containerIndex", " 0"}},
  };
  for (const auto& message : messages)
    post(message);
  for (const auto* origin : {"null", "https://evil.example", "https://1.usercontent.example"}) {
    postAlone({{"type", "ondrelHighlightHostReady"}}, 11, origin);
    postAlone({{"type", "ondrelHighlightRemove"}, {"highlightId", "h1"}, {"containerIndex", "0"}}, 11,
              origin);
  }
  EXPECT_EQ(store.allHighlights().size(), 1U);
  EXPECT_TRUE(page->evaluations.empty());
}

} // namespace
} // namespace ondrel::highlights
