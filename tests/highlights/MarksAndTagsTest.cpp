#include "HighlightWorld.h"
#include "highlights/SequentialTasks.h"

namespace ondrel::highlights {
namespace {

using MarksAndTagsTest = HighlightWorld;

const std::string mailboxes = support::FakeJMAPClient::reply(
    {R"({"list":[{"id":"B1","name":"Inbox","role":"inbox"},{"id":"B2","name":"highlighted"},{"id":"B3","name":"Other"}]})"});
const std::string updated = support::FakeJMAPClient::reply({R"({"updated":{}})"});

std::string call(std::string_view threadIds) {
  return "window.__ondrelApplyMailboxHighlightMarks(" + std::string(threadIds) + ")";
}

TEST_F(MarksAndTagsTest, EveryTabGetsAllThreads) {
  post({{"type", "ondrelMailboxMarkersReady"}});
  EXPECT_EQ(page->evaluations, Lines{call("[]")});
  EXPECT_FALSE(page->evaluationFrames.back()) << "the main frame";

  shell.manager->newTab();
  shell.settle();
  shell.showFocusedWindow();
  const auto second = shell.webView(shell.focusedModel());
  ASSERT_TRUE(second && second != page);
  second->evaluations.clear();
  store.add({"h", "T\"2", "x", "", "", 0, 1}, "x@x");
  showThread();
  page->answer = [&](const std::string&) -> platform::ScriptResult {
    EXPECT_TRUE(second->evaluations.empty()) << "in turn";
    return std::unexpected(platform::ScriptError{platform::ScriptError::Kind::exception, "no such function"});
  };
  create("h1", "0");
  EXPECT_EQ(page->evaluations, Lines{call(R"(["T\"2","T1"])")});
  EXPECT_EQ(second->evaluations, page->evaluations);
  page->answer = nullptr;
  second->currentUrl = "https://elsewhere.example/";
  create("h2", "0");
  EXPECT_EQ(second->evaluations.size(), 1U) << "another's page gets nothing";
}

// Sleeps, and notes when it has begun and ended.
async::Task<void> push(std::vector<std::string>* log, std::string name, async::Duration duration) {
  log->push_back(name);
  const bool slept = co_await async::sleep(duration);
  log->push_back(name + (slept ? " ended" : " cancelled"));
}

TEST_F(MarksAndTagsTest, OnePageThatHangsDelaysTheOthersALittle) {
  using namespace std::chrono_literals;
  Lines log;
  const auto pushes = [&log] {
    std::vector<async::Task<void>> tasks;
    tasks.push_back(push(&log, "quick", 100ms));
    tasks.push_back(push(&log, "hung", 10s));
    tasks.push_back(push(&log, "last", 100ms));
    return tasks;
  };
  async::Scope scope;
  async::Scope callers;
  const auto call = callers.spawn(runSequentially(scope, pushes(), 500ms));
  shell.loop.advance(700ms);
  EXPECT_EQ(log, (Lines{"quick", "quick ended", "hung", "last", "last ended"}));
  EXPECT_TRUE(call.done());
  shell.loop.advance(10s);
  EXPECT_EQ(log.back(), "hung ended");

  log.clear();
  callers.spawn(runSequentially(scope, pushes(), 500ms));
  shell.loop.advance(200ms);
  callers.cancelAll();
  shell.loop.advance(10s);
  EXPECT_EQ(log, (Lines{"quick", "quick ended", "hung", "hung ended"})) << "what began goes on alone";
}

TEST_F(MarksAndTagsTest, AThreadIsLabelledWhileItHoldsHighlights) {
  showThread();
  enableTag();
  client.answerNext(mailboxes);
  client.answerNext(updated);
  create("h1", "0");
  EXPECT_EQ(requests(), (Lines{"Mailbox/get", "Email/set"}));
  const auto body = boost::json::serialize(client.sent.back().body);
  for (const auto* id : {"M1", "M2", "M3"})
    EXPECT_TRUE(body.contains("\"" + std::string(id) + R"(":{"mailboxIds/B2":true})")) << body;

  clear();
  client.answerNext(updated);
  create("h2", "2");
  EXPECT_EQ(requests(), Lines{"Email/set"}) << "the mailbox is known";
  const auto remove = [&](std::string_view id, std::string_view container) {
    clear();
    client.answerNext(updated);
    post({{"type", "ondrelHighlightRemove"}, {"highlightId", id}, {"containerIndex", container}});
  };
  remove("h1", "0");
  EXPECT_TRUE(boost::json::serialize(client.sent.back().body).contains("mailboxIds/B2\":true"));
  remove("h2", "2");
  EXPECT_TRUE(boost::json::serialize(client.sent.back().body).contains("mailboxIds/B2\":null"));

  clear();
  shell.settings.defaults().set("_highlightTagName", std::string("Missing"));
  client.answerNext(mailboxes);
  create("h3", "0");
  client.failNext(jmap::JMAPError::notAuthenticated());
  create("h4", "0");
  EXPECT_EQ(requests(), (Lines{"Mailbox/get", "Mailbox/get"}));
  shell.settings.defaults().set("_highlightTagName", std::string());
  clear();
  client.answerNext(updated);
  create("h5", "0");
  EXPECT_EQ(requests(), Lines{"Email/set"}) << "an empty name is the default one, found before";
}

TEST_F(MarksAndTagsTest, ATabThatClosesMeanwhileHasItsHighlightSavedAndItsThreadLabelled) {
  enableTag();
  client.delay = std::chrono::seconds(10);
  answerThread({"O1 o@x"});
  client.answerNext(mailboxes);
  client.answerNext(updated);
  open("T3", "O1");
  post({{"type", "ondrelHighlightContainersChanged"}, {"count", "1"}});
  create("h1", "0");
  const std::weak_ptr weak = tab;
  shell.application.last()->close();
  tab.reset();
  page.reset();
  shell.loop.advance(std::chrono::minutes(1));
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(ids("o@x"), Lines{"h1"});
  EXPECT_EQ(requests(), (Lines{"Thread/get", "Email/get", "Mailbox/get", "Email/set"}));
}

TEST_F(MarksAndTagsTest, RemovingAllAsksFirst) {
  showThread();
  create("h1", "0");
  store.add({"h", "T2", "x", "", "", 0, 1}, "n@x");
  store.add({"h", "T3", "x", "", "", 0, 1}, "o@x");
  enableTag();
  clear();
  async::Scope scope;
  scope.spawn(service.removeAllHighlights());
  shell.settle();
  ASSERT_EQ(shell.panels.alerts.size(), 1U);
  const auto& alert = shell.panels.alerts.front();
  EXPECT_EQ(alert.messageText, "Remove All Highlights?");
  EXPECT_EQ(alert.buttons, (Lines{"Cancel", "Remove All"}));
  EXPECT_EQ(store.allHighlights().size(), 3U) << "not asked for";

  shell.panels.alertAnswer = platform::Panels::firstButton + 1;
  answerThread({"M1 a@x"});
  client.answerNext(mailboxes);
  client.answerNext(updated);
  client.failNext(jmap::JMAPError::badResponse()); // the second thread
  answerThread({"O1 o@x"});
  client.answerNext(updated);
  scope.spawn(service.removeAllHighlights());
  shell.settle();
  EXPECT_TRUE(store.byMessageId().empty());
  EXPECT_EQ(shell.files.files["/data/highlights.json"], "{}");
  EXPECT_EQ(page->evaluations, (Lines{"window.__ondrelRemoveHighlights(null)", call("[]")}));
  EXPECT_TRUE(lines().front().starts_with("info system: pushMailboxMarks: ")) << "before the labels";
  EXPECT_EQ(requests(), (Lines{"Thread/get", "Email/get", "Mailbox/get", "Email/set", "Thread/get",
                               "Thread/get", "Email/get", "Email/set"}));

  clear();
  answerThread({"M1 a@x"});
  scope.spawn(service.syncAllTags({"T1", "T2", "T3"}, [](std::size_t done) { return done < 1; }));
  shell.settle();
  EXPECT_EQ(requests(), (Lines{"Thread/get", "Email/get", "Email/set"})) << "it was told to end then";

  clear();
  shell.settings.set(settings::keys::highlightTagEnabled, false);
  scope.spawn(service.syncAllTags({"T1"}));
  shell.settle();
  EXPECT_TRUE(client.sent.empty());
}

} // namespace
} // namespace ondrel::highlights
