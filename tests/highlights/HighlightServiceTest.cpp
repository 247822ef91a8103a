#include "HighlightWorld.h"
#include "highlights/ContainerMessages.h"
#include "highlights/HighlightAnchor.h"

#include <limits>

namespace ondrel::highlights {
namespace {

using namespace std::chrono_literals;
using HighlightServiceTest = HighlightWorld;

TEST_F(HighlightServiceTest, ContainersAreCountedFromTheOpenMessage) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  struct Case {
    std::optional<std::string> open;
    std::int64_t count;
    std::optional<std::int64_t> focused;
    std::string expected; // "-" for an unknown message
  };
  const Case cases[] = {
      {"3", 3, 1, "234"},   {"0", 1, {}, "0"},  {"3", 2, {}, "01"},  {"0", 7, 1, "-01234-"},
      {"4", 3, 0, "4--"},   {"x", 2, 1, "01"},  {{}, 2, 1, "01"},    {"0", 7, 0, "01234--"},
      {"0", 0, 0, ""},      {"0", -1, 0, ""},   {"0", least, 0, ""}, {"4", 2, least, "--"},
      {"0", 2, most, "--"}, {"4", 2, -1, "--"}, {"0", 2, 5, "--"},   {"0", 2, -3, "34"},
  };
  for (const auto* message : {"0", "1", "2", "3", "4"})
    tab->highlightThreadEmails.push_back({message, message});
  for (const auto& each : cases) {
    tab->highlightCurrentInternalId = each.open;
    tab->highlightContainerCount = each.count;
    tab->highlightFocusedContainerIndex = each.focused;
    std::string ids;
    for (const auto& id : containerMessageIds(*tab))
      ids += id.value_or("-");
    EXPECT_EQ(ids, each.expected);
  }
  tab->highlightContainerCount = most;
  EXPECT_LE(containerMessageIds(*tab).size(), 10'000U);
  tab->highlightThreadEmails.clear();
  EXPECT_TRUE(containerMessageIds(*tab).empty());
}

TEST_F(HighlightServiceTest, ThreadIdOfAnAddress) {
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {"https://app.example.com/mail/Inbox/T1.M2.3?u=1", "T1"},
      {"https://app.example.com/mail/Inbox/T1", "T1"},
      {"https://app.example.com/mail/Inbox/T1.M2/", "T1"},
      {"https://app.example.com/mail/Inbox/", "Inbox"},
      {"https://app.example.com/mail/.M2", {}},
      {"https://app.example.com/", {}},
      {"", {}},
      {"not an address", {}},
      {"https://app.example.com/mail/%FF.M2", {}},
      {"https://app.example.com/mail/a%20b.c", "a b"}};
  for (const auto& [url, expected] : cases)
    EXPECT_EQ(threadIdFromURL(url), expected) << url;
}

TEST_F(HighlightServiceTest, AnchorsNeedAllTheirKeys) {
  const auto decoded = HighlightAnchor::decode(anchor("h", std::string("\"\0\xF0\x9F\x98\x80", 6)));
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->exact, std::string("\"\0\xF0\x9F\x98\x80", 6));
  EXPECT_EQ(decoded->occurrenceIndex, 3);

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
  for (const auto* broken : {"", "{", "[]", "\\", "{\"id\":\"\\ud8", "{\"id\":\"\\", "\xFF", halfId})
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

  postAlone({{"type", "ondrelHighlightHostReady"}}, 9);
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "2"}, {"focusedIndex", "1"}});
  EXPECT_EQ(sentAnchors(), R"([[],["h1","h2"]])");
  EXPECT_EQ(page->evaluationFrames.back()->id, 9U);
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "3"}, {"focusedIndex", ""}});
  EXPECT_EQ(sentAnchors(), R"([[],["h1","h2"],["h3"]])");
  EXPECT_FALSE(tab->highlightFocusedContainerIndex);
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "0"}});
  EXPECT_EQ(sentAnchors(), "[]") << "clears what the page has";
}

TEST_F(HighlightServiceTest, TheListOfAThreadIsFetchedWhenItMustBe) {
  showThread();
  open("T1", "M3");
  shell.settle();
  EXPECT_TRUE(requests().empty()) << "only the focus has moved";
  EXPECT_EQ(tab->highlightGeneration, 1);
  EXPECT_EQ(sentAnchors(), "[[],[],[]]");

  answerThread({"M1 a@x", "M2 b@x", "M3 c@x", "M4 d@x"});
  open("T1", "M4");
  shell.settle();
  EXPECT_EQ(requests(), (Lines{"Thread/get", "Email/get"})) << "a new message of the same thread";
  EXPECT_EQ(tab->highlightThreadEmails.size(), 4U);

  client.failNext(jmap::JMAPError::badResponse());
  open("T2", "N1");
  shell.settle();
  EXPECT_EQ(shell.log.count("error system: HighlightService: failed to resolve thread T2"), 1);
  EXPECT_EQ(tab->highlightThreadEmails.size(), 4U) << "the old list stays";
  answerThread({"N1 n@x"});
  open("T2", "N1");
  shell.settle();
  EXPECT_EQ(tab->highlightThreadEmails, (std::vector<jmap::ThreadEmailInfo>{{"N1", "n@x"}})) << "asked again";

  clear();
  open("T1", "M5");
  shell.settle();
  EXPECT_TRUE(requests().empty()) << "from another thread the cache does, though it lacks M5";
  EXPECT_EQ(tab->highlightThreadEmails.size(), 4U);
  EXPECT_NE(sentAnchors(), "nothing");

  answerThread({"M4 d@x"});
  open("T3", "M4");
  shell.settle();
  EXPECT_EQ(tab->highlightThreadEmails.size(), 1U)
      << "another thread, though the list of the last one has M4";

  tab->urlString.set("");
  post({{"type", "ondrelMessageChanged"}, {"internalId", "M6"}});
  EXPECT_EQ(tab->highlightCurrentInternalId, "M6");
  EXPECT_EQ(tab->highlightCurrentThreadId, "T3");
}

TEST_F(HighlightServiceTest, ALateListGoesIntoTheCacheOnly) {
  // The first thread's list is asked for before the second one's and comes after it.
  for (const std::string id : {"M1", "N1", "O1"})
    client.answer("Thread/get",
                  support::FakeJMAPClient::reply({R"({"list":[{"id":"T","emailIds":[")" + id + R"("]}]})"}));
  for (const std::string id : {"N1", "M1"})
    client.answer("Email/get", support::FakeJMAPClient::reply(
                                   {R"({"list":[{"id":")" + id + R"(","messageId":["x@x"]}]})"}));
  post({{"type", "ondrelHighlightHostReady"}});
  client.delay = 10s;
  open("T1", "M1");
  shell.settle();
  client.delay = 0s;
  open("T2", "N1");
  shell.settle();
  EXPECT_EQ(tab->highlightThreadEmails.at(0).internalId, "N1");
  clear();
  shell.loop.advance(60s);
  EXPECT_EQ(requests(), Lines{"Email/get"});
  EXPECT_EQ(tab->highlightThreadEmails.at(0).internalId, "N1") << "the user has moved on";
  EXPECT_EQ(sentAnchors(), "nothing");
  clear();
  open("T1", "M1");
  shell.settle();
  EXPECT_EQ(tab->highlightThreadEmails.at(0).internalId, "M1");
  EXPECT_TRUE(requests().empty());

  // A tab that closes while its thread is under way.
  client.delay = 10s;
  open("T3", "O1");
  shell.settle();
  shell.application.last()->close();
  tab.reset();
  page.reset();
  shell.loop.advance(60s);
  EXPECT_EQ(client.sent.size(), 2U);
}

TEST_F(HighlightServiceTest, WhatThePageMakesIsSaved) {
  showThread();
  const auto before = std::chrono::system_clock::now().time_since_epoch() - 978307200s;
  create("h1", "2");
  const auto saved = store.highlights("c@x").at(0);
  EXPECT_EQ(saved, (PersistedHighlight{"h1", "T1", "words", "p", "s", 3, saved.createdAt}));
  EXPECT_NEAR(saved.createdAt, std::chrono::duration<double>(before).count(), 60);
  EXPECT_TRUE(shell.files.files["/data/highlights.json"].contains("h1"));
  EXPECT_EQ(page->evaluations, Lines{R"(window.__ondrelApplyMailboxHighlightMarks(["T1"]))"})
      << "the page has its anchors already";
  EXPECT_EQ(lines(), (Lines{"info system: syncTag: skipped — feature disabled in Settings",
                            "info system: pushMailboxMarks: pushed 1 threadId(s) T1, JS returned null"}));

  clear();
  create("h2", "3");
  create("h2", "-1");
  post({{"type", "ondrelHighlightCreate"}, {"anchorJSON", "{}"}, {"containerIndex", "0"}});
  tab->highlightCurrentThreadId.reset();
  create("h2", "0");
  tab->highlightCurrentThreadId = "T1";
  tab->highlightThreadEmails.clear();
  create("h2", "0");
  Lines failures;
  for (const auto* container : {"3", "-1", "0", "0", "0"})
    failures.push_back("error system: HighlightService: failed to resolve container " +
                       std::string(container) + " or decode anchor");
  EXPECT_EQ(lines(), failures);
  EXPECT_EQ(store.allHighlights().size(), 1U);
  EXPECT_TRUE(page->evaluations.empty());
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
  Lines failures = {"error system: HighlightService: failed to resolve container -1 for removal",
                    "error system: HighlightService: failed to resolve container 3 for removal"};
  for (const auto* broken : {"", "{}", "[1]", "[\"h2\",null]", "[\"h2\""})
    clearOrphaned(broken, "1");
  failures.insert(
      failures.end(), 5,
      "error system: HighlightService: failed to resolve container 1 for clearing orphaned highlights");
  clearOrphaned("[\"h2\"]", "5");
  failures.emplace_back(
      "error system: HighlightService: failed to resolve container 5 for clearing orphaned highlights");
  EXPECT_EQ(lines(), failures);
  EXPECT_EQ(ids("b@x").size(), 4U);
  EXPECT_TRUE(page->evaluations.empty());

  remove("1");
  EXPECT_EQ(ids("b@x"), (Lines{"h2", "h3", "h4"}));
  EXPECT_EQ(page->evaluations.size(), 1U);
  clearOrphaned("[]", "1");
  EXPECT_EQ(page->evaluations.size(), 2U) << "nothing to remove, and told all the same";
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
      {{"type", "ondrelHighlightContainersChanged"}, {"count", "many"}, {"focusedIndex", "0"}},
      {{"type", "ondrelHighlightContainersChanged"}, {"count", ""}},
      {{"type", "ondrelHighlightContainersChanged"}, {"count", "99999999999999999999"}},
      {{"type", "ondrelHighlightCreate"}, {"anchorJSON", anchor("x")}},
      {{"type", "ondrelHighlightCreate"}, {"anchorJSON", anchor("x")}, {"containerIndex", "1.0"}},
      {{"type", "ondrelHighlightCreate"}, {"containerIndex", "0"}},
      {{"type", "ondrelHighlightRemove"}, {"highlightId", "h1"}},
      {{"type", "ondrelHighlightRemove"}, {"highlightId", "h1"}, {"containerIndex", "0x0"}},
      {{"type", "ondrelHighlightRemove"}, {"containerIndex", "0"}},
      {{"type", "ondrelHighlightClearOrphaned"}, {"containerIndex", "0"}},
      {{"type", "ondrelHighlightClearOrphaned"}, {"idsJSON", "[\"h1\"]"}, {"containerIndex", " 0"}},
  };
  for (const auto& message : messages)
    post(message);
  EXPECT_TRUE(lines().empty()) << lines().front();
  EXPECT_TRUE(page->evaluations.empty());
  EXPECT_EQ(tab->highlightContainerCount, 3);
  EXPECT_EQ(store.allHighlights().size(), 1U);

  for (const auto* origin : {"null", "https://evil.example", "https://1.usercontent.example"}) {
    postAlone({{"type", "ondrelHighlightHostReady"}}, 11, origin);
    postAlone({{"type", "ondrelHighlightRemove"}, {"highlightId", "h1"}, {"containerIndex", "0"}}, 11,
              origin);
  }
  shell.services.highlights = nullptr;
  post({{"type", "ondrelHighlightRemove"}, {"highlightId", "h1"}, {"containerIndex", "0"}});
  post({{"type", "ondrelMailboxMarkersReady"}});
  EXPECT_EQ(tab->highlightContentFrame->id, 7U);
  EXPECT_EQ(store.allHighlights().size(), 1U);
  EXPECT_TRUE(page->evaluations.empty());
}

} // namespace
} // namespace ondrel::highlights
