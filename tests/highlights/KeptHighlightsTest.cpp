#include "highlights/KeptHighlights.h"

#include "highlights/HighlightImport.h"
#include "highlights/file/HighlightStore.h"
#include "support/FakeFileReader.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::highlights {
namespace {

std::string fileWith(const std::string& id) {
  return R"({"m@x":[{"id":")" + id +
         R"(","threadId":"T","exact":"e","prefix":"","suffix":"","occurrenceIndex":0,"createdAt":1}]})";
}

class KeptHighlightsTest : public testing::Test {
 protected:
  // A start of the program: what its user is told.
  void start(bool clicks) {
    told.clear();
    store.emplace(shell.files, shell.files);
    highlightImport.emplace(
        HighlightImport::Services{.store = *store,
                                  .application = shell.application,
                                  .panels = shell.panels,
                                  .reader = reader,
                                  .pushMailboxMarks = []() -> async::Task<void> { co_return; },
                                  .syncTags = [](auto, auto) -> async::Task<void> { co_return; }});
    if (!shell.manager)
      shell.start();
    KeptHighlights kept({*store, shell.files, shell.settings, *shell.manager, *highlightImport});
    const auto notices = shell.focusedModel()->noticed.subscribe([&](const web::PageNotice& notice) {
      told.push_back(notice.text);
      EXPECT_EQ(notice.button, "Import");
      if (clicks)
        notice.act();
    });
    kept.start();
    shell.loop.advance(std::chrono::minutes(1));
  }

  support::TestShell shell;
  support::FakeFileReader reader{shell.files};
  std::optional<HighlightStore> store;
  std::optional<HighlightImport> highlightImport;
  std::vector<std::string> told;
};

TEST_F(KeptHighlightsTest, AreToldWithEachStartUntilTheyAreImported) {
  const std::string file = "/data/highlights.json";
  auto& files = shell.files.files;
  start(true);
  EXPECT_TRUE(told.empty());
  files[file] = fileWith("a") + "!";
  files[file + ".damaged-1"] = fileWith("b") + "}";
  files[file + ".damaged-3"] = ""; // nothing to be had from it: told once
  files[file + ".other-1"] = fileWith("c");
  start(false);
  const std::string first = "Your highlights can't be read: highlights.json is damaged.";
  EXPECT_EQ(told, std::vector{first});
  start(false);
  EXPECT_EQ(told, std::vector{first}) << "again";

  start(true);
  EXPECT_EQ(told, (std::vector<std::string>{
                      first, "Highlights of a damaged file were kept: highlights.json.damaged-1",
                      "Highlights of a damaged file were kept: highlights.json.damaged-3",
                      "Highlights of another copy of Ondrel were kept: "
                      "highlights.json.other-1"}));
  EXPECT_EQ(store->highlights("m@x").size(), 3U);
  EXPECT_TRUE(files.contains(file + ".damaged-2")) << "moved there by the save, and known";
  start(true);
  EXPECT_TRUE(told.empty());
}

} // namespace
} // namespace ondrel::highlights
