// Highlights out of the program and back into it.
#include "TransferWorld.h"
#include "async/Scope.h"
#include "base/Base64.h"
#include "base/Log.h"
#include "highlights/HighlightImport.h"
#include "support/FakeFileReader.h"
#include "support/RunToEnd.h"

namespace ondrel::highlights {
namespace {

using Lines = std::vector<std::string>;

class HighlightTransferTest : public TransferWorld {
 protected:
  HighlightTransferTest() {
    key = shell.application.makeWindow({});
    shell.application.setKey(key);
    shell.panels.savePath = "/documents/out.html";
    shell.panels.openPaths = Lines{"/documents/out.html"};
    resolve("1", "One");
  }

  PersistedHighlight highlight(const std::string& id, double createdAt, const std::string& exact = "text") {
    return {id, "T-" + id, exact, "", "", 0, createdAt};
  }

  void run(async::Task<void> task) {
    const auto handle = scope.spawn(std::move(task));
    shell.loop.advance(std::chrono::minutes(1));
    EXPECT_TRUE(handle.done()) << "it never ended";
  }
  std::string generate(bool forFile) {
    return support::runToEnd(shell.loop, scope, highlightExport.generateHighlightsHTML(forFile));
  }
  void import(const std::string& content) {
    shell.files.files["/documents/out.html"] = content;
    run(highlightImport.importHighlights());
  }
  static std::string fileWithPayload(const std::string& payload) {
    return R"(<x id="ondrel-highlights-data">)" + payload + "</script>";
  }
  static std::string fileWith(const std::string& json) {
    return fileWithPayload(
        base::base64Encoded({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()}));
  }
  // Title and text of the only alert since the last look.
  std::pair<std::string, std::string> alert() {
    EXPECT_EQ(shell.panels.alerts.size(), 1U);
    if (shell.panels.alerts.empty())
      return {};
    const auto shown = shell.panels.alerts.front();
    EXPECT_EQ(shown.buttons, Lines{"OK"});
    EXPECT_EQ(shown.style, platform::AlertStyle::informational);
    shell.panels.alerts.clear();
    return {shown.messageText, shown.informativeText};
  }

  support::FakeFileReader reader{shell.files};
  Lines calls;
  HighlightImport highlightImport{
      {.store = store,
       .application = shell.application,
       .panels = shell.panels,
       .reader = reader,
       .pushMailboxMarks = [this]() -> async::Task<void> { return label({"push"}, nullptr); },
       .syncTags = [this](auto threads, auto goOn) { return label(threads, goOn); }}};
  std::shared_ptr<platform::Window> key;
  async::Scope scope;

 private:
  async::Task<void> label(std::set<std::string> threads, std::function<bool(std::size_t)> goOn) {
    std::string text;
    std::size_t done = 0;
    for (const auto& thread : threads) {
      if (goOn && !goOn(done++))
        break;
      text += " " + thread;
      co_await async::nextTurn();
    }
    calls.push_back(text);
  }
};

TEST_F(HighlightTransferTest, ListsWhatItCanResolveNewestFirstAndKeepsAllInThePayload) {
  store.add(highlight("a", 1, "old"), "1@x");
  store.add(highlight("b", 3, "new"), "1@x");
  store.add(highlight("c", 2, "middle"), "1@x");
  store.add(highlight("d", 4), "gone@x");
  auto joined = highlight("e", 5, "oneTwo");
  joined.quote = HighlightQuote{"be <fore ", "one Two", " after"};
  store.add(joined, "1@x");
  const auto html = generate(true);
  EXPECT_TRUE(html.contains("be &lt;fore </span><mark>one Two</mark><span class=\"context\"> after<"));
  const auto newest = html.find("<mark>new</mark>");
  const auto middle = html.find("<mark>middle</mark>", newest);
  EXPECT_NE(html.find("<mark>old</mark>", middle), html.npos);
  EXPECT_TRUE(html.contains(R"(href="https://app.example.com/mail/Inbox/T1.M1?u=123">One</a>)")) << html;

  store.removeAll();
  import(html);
  EXPECT_EQ(store.allHighlights().size(), 5U) << "also that of the message which is gone";
  EXPECT_EQ(store.byMessageId().at("gone@x").front(), highlight("d", 4));
}

TEST_F(HighlightTransferTest, TheDocumentIsThereWithoutTheServer) {
  const auto session = std::exchange(client.session, std::unexpected(jmap::JMAPError::sseStale()));
  store.add(highlight("a", 1), "1@x");
  const auto saysIt = [](const std::string& html, const std::string& problem) {
    return html.contains(problem) && html.contains("not looked up") && html.contains("<mark>text</mark>");
  };
  const std::string unreachable = "The mail server can't be reached.";
  const auto html = generate(true);
  EXPECT_TRUE(saysIt(html, unreachable)) << html;
  client.session = std::unexpected(jmap::JMAPError::notAuthenticated());
  EXPECT_TRUE(saysIt(generate(true), "Nobody is signed in, so messages could not be looked up."));
  // The connection ends between two requests.
  client.session = session;
  client.failNext({jmap::JMAPError::Kind::transport, "reset"});
  EXPECT_TRUE(saysIt(generate(true), unreachable));
  store.removeAll();
  import(html);
  EXPECT_EQ(store.allHighlights().size(), 1U);
}

TEST_F(HighlightTransferTest, ExportAsksAndWrites) {
  store.add(highlight("a", 1), "1@x");
  run(highlightExport.exportHighlights());
  EXPECT_EQ(shell.panels.savePanels.at(0).proposedName, "Ondrel Highlights.html");
  EXPECT_TRUE(shell.files.files["/documents/out.html"].ends_with("</html>"));
  EXPECT_TRUE(shell.panels.alerts.empty()) << "success is silent";

  shell.files.full = true;
  run(highlightExport.exportHighlights());
  EXPECT_EQ(alert(), (std::pair<std::string, std::string>{"Couldn't Save File", "no space left on device"}));

  // Nobody chooses a file, and no window has the keyboard.
  shell.panels.savePath.reset();
  run(highlightExport.exportHighlights());
  shell.application.setKey(nullptr);
  run(highlightExport.exportHighlights());
  run(highlightImport.importHighlights());
  EXPECT_EQ(shell.panels.savePanels.size(), 3U);
  EXPECT_TRUE(shell.panels.openPanels.empty() && shell.panels.alerts.empty());
}

TEST_F(HighlightTransferTest, AnExportTellsHowFarItIsAndCanBeStopped) {
  for (int i = 0; i < 401; ++i)
    store.add(highlight("a", 1), std::to_string(i) + "@x");
  client.delay = std::chrono::seconds(1);
  using Progress = TransferProgress;
  std::vector<Progress> seen;
  bool stop = false;
  const auto watching = highlightExport.progress().observe([&] {
    const auto progress = *highlightExport.progress();
    if (!progress)
      return;
    seen.push_back(*progress);
    // As the window that shows it does.
    shell.application.setKey(nullptr);
    if (stop && progress->done == 200)
      highlightExport.stop();
  });
  run(highlightExport.exportHighlights());
  const auto step = Progress::Step::asking;
  EXPECT_EQ(seen,
            (std::vector<Progress>{{step, 0, 401}, {step, 200, 401}, {step, 400, 401}, {step, 401, 401}}));
  EXPECT_EQ(shell.panels.savePanels.size(), 1U);
  EXPECT_EQ(shell.panels.savePanelParent, key) << "the window that it was asked for in";
  EXPECT_FALSE(highlightExport.progress()->has_value());

  stop = true;
  shell.application.setKey(key);
  client.sent.clear();
  run(highlightExport.exportHighlights());
  EXPECT_EQ(client.sent.size(), 1U) << "what was not asked yet is asked no more";
  EXPECT_EQ(shell.panels.savePanels.size(), 1U);
  EXPECT_FALSE(highlightExport.progress()->has_value());

  stop = false;
  shell.application.setKey(key);
  const auto closing = highlightExport.progress().observe([&] {
    if (const auto progress = *highlightExport.progress(); progress && progress->done == 400)
      key->close();
  });
  run(highlightExport.exportHighlights());
  EXPECT_EQ(shell.panels.savePanels.size(), 1U) << "its window has gone";
}

TEST_F(HighlightTransferTest, TwoExportsAreShownUntilTheLastAndStoppedTogether) {
  for (int i = 0; i < 401; ++i)
    store.add(highlight("a", 1), std::to_string(i) + "@x");
  client.delay = std::chrono::seconds(1);
  scope.spawn(highlightExport.exportHighlights());
  shell.loop.advance(std::chrono::milliseconds(2500));
  scope.spawn(highlightExport.exportHighlights());
  shell.loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(shell.panels.savePanels.size(), 1U);
  EXPECT_TRUE(highlightExport.progress()->has_value()) << "of the second";
  shell.loop.advance(std::chrono::minutes(1));
  EXPECT_EQ(shell.panels.savePanels.size(), 2U);

  scope.spawn(highlightExport.exportHighlights());
  scope.spawn(highlightExport.exportHighlights());
  shell.loop.advance(std::chrono::milliseconds(500));
  highlightExport.stop();
  shell.loop.advance(std::chrono::minutes(1));
  EXPECT_EQ(shell.panels.savePanels.size(), 2U);
  EXPECT_FALSE(highlightExport.progress()->has_value());
}

TEST_F(HighlightTransferTest, ImportMergesAndIsIdempotent) {
  store.add(highlight("a", 1), "1@x");
  store.add(highlight("b", 2.25), "2@x");
  run(highlightExport.exportHighlights());
  run(highlightImport.importHighlights());
  EXPECT_EQ(alert().second, "Imported 0 highlights, skipped 2 already saved.");
  EXPECT_EQ(calls, Lines{}) << "nothing new, nothing pushed";

  const auto before = store.byMessageId();
  store.remove("a", "1@x");
  run(highlightImport.importHighlights());
  EXPECT_EQ(alert(), (std::pair<std::string, std::string>{"Highlights Imported",
                                                          "Imported 1 highlight, skipped 1 already saved."}));
  EXPECT_EQ(store.byMessageId(), before);
  EXPECT_EQ(calls, (Lines{" push", " T-a"}));

  calls.clear();
  store.removeAll();
  run(highlightImport.importHighlights());
  EXPECT_EQ(alert().second, "Imported 2 highlights.");
  EXPECT_EQ(store.byMessageId(), before) << "createdAt included";
  EXPECT_EQ(calls, (Lines{" push", " T-a T-b"}));

  // An id is one of its message alone.
  const auto same = highlight("a", 9, "other");
  import(fileWithPayload(encodedPayload({{"3@x", same}, {"3@x", same}, {"1@x", same}})));
  EXPECT_EQ(alert().second, "Imported 1 highlight, skipped 2 already saved.");
  EXPECT_EQ(store.highlights("3@x"), std::vector{same});
  EXPECT_EQ(store.highlights("1@x"), before.at("1@x")) << "no record is changed";
}

TEST_F(HighlightTransferTest, SaysWhatIsWrongWithAFileAndImportsNothingOfIt) {
  const auto good = encodedPayload({{"1@x", highlight("a", 1)}});
  const std::string record =
      R"({"messageId":"1@x","highlight":{"id":"h","threadId":"T","exact":"e","prefix":"",)"
      R"("suffix":"","occurrenceIndex":0)";
  // A character that the first megabyte cuts in two is no fault of the file.
  const auto cut = std::string((1 << 20) - 1, 'x') + "é";
  const std::pair<std::string, Lines> cases[] = {
      {"Couldn't Read File", {"\xFF", cut + "\xC3", std::string(1 << 20, '\x80')}},
      {"Nothing to Import", {"", "<html></html>", cut, fileWithPayload(good + "\n")}},
      {"Couldn't Read Highlights",
       {fileWith("{}"), fileWith("[" + record + "}}]"), fileWith("[" + record + R"(,"createdAt":1}},{}])")}},
  };
  for (const auto& [title, contents] : cases)
    for (const auto& content : contents) {
      import(content);
      EXPECT_EQ(alert().first, title) << content.substr(0, 200);
      EXPECT_FALSE(*highlightImport.progress()) << "nothing is left on screen";
    }
  EXPECT_TRUE(store.byMessageId().empty());
  EXPECT_FALSE(shell.files.exists("/data/highlights.json"));

  import(cut + fileWith("[]"));
  EXPECT_EQ(alert().second, "Imported 0 highlights.");
}

TEST_F(HighlightTransferTest, WhatIsStoppedKeepsWhatItHasAdded) {
  std::vector<ExportedHighlight> many;
  for (int i = 0; i < 100; ++i)
    many.push_back({"1@x", highlight(std::to_string(i), i)});
  const auto file = fileWithPayload(encodedPayload(many));
  {
    const auto stopping = store.changed.subscribe([this] {
      if (store.highlights("1@x").size() == 7)
        highlightImport.stop();
    });
    import(file);
  }
  EXPECT_EQ(store.highlights("1@x").size(), 7U);
  EXPECT_EQ(alert().second, "Imported 7 highlights.");
  EXPECT_EQ(calls.size(), 2U);

  // While the file is being read there is nothing to report yet.
  {
    const auto stopping = highlightImport.progress().observe([this] { highlightImport.stop(); });
    import(file);
  }
  EXPECT_EQ(store.highlights("1@x").size(), 7U);
  EXPECT_TRUE(shell.panels.alerts.empty());
  import(file);
  EXPECT_EQ(alert().second, "Imported 93 highlights, skipped 7 already saved.");

  const TransferProgress second{TransferProgress::Step::labelling, 1, 3};
  const auto stopping = highlightImport.progress().observe([&] {
    if (*highlightImport.progress() == second)
      highlightImport.stop();
  });
  import(fileWithPayload(
      encodedPayload({{"2@x", highlight("x", 1)}, {"2@x", highlight("y", 2)}, {"3@x", highlight("z", 3)}})));
  EXPECT_EQ(calls.back(), " T-x") << "labels can be stopped too";
  EXPECT_EQ(alert().second, "Imported 3 highlights.");
}

TEST_F(HighlightTransferTest, SaysWhatCouldNotBeSaved) {
  const auto text = [this] {
    EXPECT_EQ(shell.panels.alerts.size(), 1U);
    const auto shown = std::exchange(shell.panels.alerts, {}).at(0);
    EXPECT_EQ(shown.style == platform::AlertStyle::warning, shown.informativeText.contains("could not"));
    return shown.informativeText;
  };
  const std::string reason = " could not be saved: no space left on device. Ondrel goes on trying.";
  std::vector<ExportedHighlight> many;
  for (int i = 0; i < 1000; ++i)
    many.push_back({"1@x", highlight(std::to_string(i), i)});
  shell.files.full = true;
  import(fileWithPayload(encodedPayload(many)));
  EXPECT_EQ(text(), "Imported 1000 highlights, but they" + reason);
  import(fileWithPayload(encodedPayload({many[0]})));
  EXPECT_EQ(text(), "Imported 0 highlights, skipped 1 already there, but it" + reason);

  // The first slice's save still has its place on the disk.
  shell.files.full = false;
  shell.loop.advance(std::chrono::minutes(1));
  shell.files.writes = 0;
  const auto filling = store.changed.subscribe([this] {
    shell.files.full = store.highlights("2@x").size() > 400;
    if (store.highlights("2@x").size() == 400)
      shell.loop.advance(std::chrono::milliseconds(8)); // the slice is over
  });
  for (auto& each : many)
    each.messageId = "2@x";
  import(fileWithPayload(encodedPayload(many)));
  EXPECT_EQ(text(), "Imported 1000 highlights, but 600 of them" + reason);
  EXPECT_LT(shell.files.writes, 10) << "a save for each slice";
}

TEST_F(HighlightTransferTest, TakesWhatCanBeReadOfAStoresFile) {
  shell.panels.openPaths = Lines{"/data/highlights.json.damaged-1"};
  for (const auto* message : {"1@x", "2\"@x", "3@x"})
    for (const auto* id : {"a", "b"})
      store.add(highlight(message + std::string(id), 1.5, "text],\",[{\"id\":\""), message);
  const auto whole = shell.files.files["/data/highlights.json"];
  const auto before = store.byMessageId();
  const auto with = [&](const std::string& part, const std::string& other) {
    auto text = whole;
    return text.replace(text.find(part), part.size(), other);
  };
  const std::string second = R"({"id":"1@xb")";
  const std::string damage = " The file is damaged, and holds more that could not be read.";
  const std::pair<std::string, std::string> cases[] = {
      {"\n" + whole, "Imported 6 highlights."},
      {with("{", R"({"version":2,"later":{"a":[1]},)"), "Imported 6 highlights."},
      {whole.substr(0, whole.size() - 1), "Imported 6 highlights." + damage},
      {whole.substr(0, whole.size() - 10), "Imported 5 highlights." + damage},
      {whole + std::string(1000, '\0'), "Imported 6 highlights." + damage},
      {with(second, R"({"id":1)"), "Imported 5 highlights." + damage},
      {with(second, R"({"id":"\xFF")"), "Imported 5 highlights." + damage},
      {with(second, R"({"id:"1@xb")"), "Imported 5 highlights." + damage},
      {with(second, std::string(40, '\0')), "Imported 5 highlights." + damage},
  };
  for (const auto& [content, report] : cases) {
    store.removeAll();
    shell.files.files["/data/highlights.json.damaged-1"] = content;
    shell.panels.alerts.clear();
    run(highlightImport.importHighlights());
    EXPECT_EQ(alert().second, report) << content;
    for (const auto& [messageId, each] : store.allHighlights())
      EXPECT_TRUE(each.id.starts_with(messageId)) << content;
    EXPECT_EQ(store.byMessageId() == before, !report.contains("damaged") || report.contains("6")) << content;
  }

  store.removeAll();
  const std::pair<std::string, std::string> none[] = {
      {"{}", "Nothing to Import"},
      {R"({"a":1})", "Nothing to Import"},
      {R"({"a":[1]})", "Couldn't Read Highlights"},
      {"{" + std::string(1 << 20, '['), "Couldn't Read Highlights"},
      {"{\"a\":[{\"\\", "Couldn't Read Highlights"}};
  for (const auto& [content, title] : none) {
    shell.files.files["/data/highlights.json.damaged-1"] = content;
    run(highlightImport.importHighlights());
    EXPECT_EQ(alert().first, title) << content.substr(0, 100);
  }
  EXPECT_TRUE(store.byMessageId().empty());
}

TEST_F(HighlightTransferTest, TwoImportsDontCountEachOthersHighlights) {
  shell.files.files["/documents/out.html"] = fileWithPayload(encodedPayload({{"1@x", highlight("a", 1)}}));
  scope.spawn(highlightImport.importHighlights());
  run(highlightImport.importHighlights());
  ASSERT_EQ(shell.panels.alerts.size(), 2U);
  EXPECT_EQ(shell.panels.alerts[0].informativeText, "Imported 1 highlight.");
  EXPECT_EQ(shell.panels.alerts[1].informativeText, "Imported 0 highlights, skipped 1 already saved.");
}

} // namespace
} // namespace ondrel::highlights
