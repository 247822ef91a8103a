#include "platform/linux/files/JsonUserDefaults.h"

#include "async/VirtualEventLoop.h"
#include "platform/linux/files/DefaultsWatch.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"
#include "support/MainLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace ondrel::platform {

namespace {

class UserDefaultsTest : public testing::Test {
 protected:
  std::unique_ptr<files::JsonUserDefaults> open() {
    return std::make_unique<files::JsonUserDefaults>(files, "/d.json");
  }

  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeFiles files;
};

TEST_F(UserDefaultsTest, KeepsEachTypeAndSavesOnceATurn) {
  auto defaults = open();
  EXPECT_TRUE(log.lines().empty()) << "a missing file is no error";
  std::vector<std::string> changes;
  const auto subscription =
      defaults->changed.subscribe([&](const std::string& key) { changes.push_back(key); });
  defaults->set("yes", true);
  defaults->set("port", 7777);
  defaults->set("zoom", 1.1);
  defaults->set("whole", 2.0);
  defaults->set("name", "Grüße\n\"😀\"");
  defaults->set("bytes", std::string("a\xff") + "b");
  defaults->set("yes", true);
  defaults->set("nothing", std::numeric_limits<double>::infinity());
  EXPECT_EQ(changes, (std::vector<std::string>{"yes", "port", "zoom", "whole", "name", "bytes"}));
  EXPECT_EQ(files.writes, 0);
  loop.runUntilIdle();
  EXPECT_EQ(files.writes, 1);
  EXPECT_EQ(files.files["/d.json"], "{\n"
                                    "  \"yes\": true,\n"
                                    "  \"port\": 7777,\n"
                                    "  \"zoom\": 1.1,\n"
                                    "  \"whole\": 2.0,\n"
                                    "  \"name\": \"Grüße\\n\\\"😀\\\"\",\n"
                                    "  \"bytes\": \"a\uFFFDb\"\n"
                                    "}\n");
  defaults->remove("yes");
  defaults->remove("yes");
  defaults = nullptr; // saves what is left
  EXPECT_EQ(files.writes, 2);

  const auto again = open();
  EXPECT_EQ(again->boolean("yes"), std::nullopt);
  EXPECT_EQ(again->integer("port"), 7777);
  EXPECT_EQ(again->number("port"), 7777.0);
  EXPECT_EQ(again->number("zoom"), 1.1);
  EXPECT_EQ(again->integer("whole"), std::nullopt);
  EXPECT_EQ(again->string("name"), "Grüße\n\"😀\"");
  EXPECT_EQ(again->boolean("port"), std::nullopt) << "another type counts as absent";
  EXPECT_EQ(again->string("port"), std::nullopt);
  loop.runUntilIdle(); // the first one's posted save has nothing to touch any more
}

TEST_F(UserDefaultsTest, LeavesAloneWhatItDoesNotKnow) {
  auto& content = files.files["/d.json"];
  content = R"({"theirs":{"deep":[1,{"x":null}],"big":18446744073709551615},"_runJS":"yes"})";
  const auto defaults = open();
  EXPECT_EQ(defaults->boolean("_runJS"), std::nullopt);
  defaults->set("ours", 1);
  loop.runUntilIdle();
  EXPECT_EQ(content, R"({
  "theirs": {
    "deep": [
      1,
      {
        "x": null
      }
    ],
    "big": 18446744073709551615
  },
  "_runJS": "yes",
  "ours": 1
}
)");
}

TEST_F(UserDefaultsTest, StartsWithoutADamagedFile) {
  auto& content = files.files["/d.json"];
  const std::string tooDeep = "{\"a\":" + std::string(100, '[') + "1" + std::string(100, ']') + "}";
  const std::string tooLarge(files::JsonUserDefaults::largestFile + 1, ' ');
  for (const auto& text : {std::string(), std::string("{"), std::string("[1]"), std::string("null"),
                           std::string("{\"a\":1}}"), std::string("{\"a\":\"\xff\"}"), tooDeep, tooLarge}) {
    support::LogCapture::lines().clear();
    content = text;
    open()->set("a", 2);
    const std::string why = text == tooLarge ? "too large to be ours" : "damaged";
    EXPECT_TRUE(
        log.anyStartsWith("error system: Settings are " + why + ", starting with the defaults: /d.json"));
    EXPECT_EQ(content, "{\n  \"a\": 2\n}\n");
  }
}

TEST_F(UserDefaultsTest, WhatASecondCopyHasChangedMeanwhileIsMergedByKey) {
  const support::TemporaryFolder folder;
  files::PosixFileStore store;
  folder.write("synced.json", R"({"both":1,"ours":1,"theirs":1,"gone":1,"removed":1})");
  std::filesystem::create_symlink("synced.json", folder.file("defaults.json"));
  files::JsonUserDefaults ours(store, folder.file("defaults.json"));
  files::JsonUserDefaults theirs(store, folder.file("defaults.json"));
  std::vector<std::string> changes;
  const auto subscription = ours.changed.subscribe([&](const std::string& key) { changes.push_back(key); });
  theirs.set("both", 2);
  theirs.set("theirs", 2);
  theirs.set("new", 2);
  theirs.remove("gone");
  loop.runUntilIdle();
  ours.set("both", 3);
  ours.set("ours", 3);
  ours.remove("removed");
  changes.clear();
  loop.runUntilIdle();
  EXPECT_EQ(folder.content("synced.json"), R"({
  "both": 3,
  "ours": 3,
  "theirs": 2,
  "new": 2
}
)");
  EXPECT_EQ(changes, (std::vector<std::string>{"gone", "new", "theirs"}));
  EXPECT_EQ(ours.integer("theirs"), 2);
  EXPECT_EQ(folder.names(), (std::set<std::string>{"defaults.json", "synced.json"}));

  theirs.set("ours", 4); // what it hasn't changed since its own save is the other's
  loop.runUntilIdle();
  EXPECT_EQ(theirs.integer("both"), 3);
}

TEST_F(UserDefaultsTest, WhatOthersDoToTheFileShowsAtOnceAndIsNeverLost) {
  auto& content = files.files["/d.json"];
  content = R"({"same":1,"theirs":1,"both":1,"gone":1})";
  const auto defaults = open();
  std::vector<std::string> changes;
  const auto subscription =
      defaults->changed.subscribe([&](const std::string& key) { changes.push_back(key); });
  const auto reread = [&] {
    changes.clear();
    defaults->reread();
    return changes;
  };
  using Keys = std::vector<std::string>;
  defaults->set("both", 2);
  content = R"({"same":1,"theirs":3,"both":3,"new":3})";
  EXPECT_EQ(reread(), (Keys{"gone", "new", "theirs"}));
  EXPECT_EQ(defaults->integer("both"), 2) << "set here, and not saved yet";
  loop.runUntilIdle();
  EXPECT_EQ(content, "{\n  \"same\": 1,\n  \"theirs\": 3,\n  \"both\": 2,\n  \"new\": 3\n}\n");
  EXPECT_EQ(reread(), Keys{}) << "its own save";

  content = R"({"same":1,"theirs)";
  EXPECT_EQ(reread(), Keys{});
  EXPECT_EQ(reread(), Keys{});
  EXPECT_EQ(support::LogCapture::lines().size(), 1U) << "told once";
  EXPECT_EQ(content, R"({"same":1,"theirs)");
  defaults->set("same", 2);
  loop.runUntilIdle();
  EXPECT_EQ(files.files["/d.json.damaged-1"], R"({"same":1,"theirs)");
  files.files.erase("/d.json");
  EXPECT_EQ(reread(), Keys{});
  EXPECT_EQ(defaults->integer("theirs"), 3);
}

TEST(DefaultsWatchTest, SeesAFileBehindALinkWrittenAndReplaced) {
  const glib::GlibEventLoop loop;
  const support::TemporaryFolder folder;
  files::PosixFileStore store;
  folder.write("synced.json", "{}");
  std::filesystem::create_symlink("synced.json", folder.file("defaults.json"));
  files::JsonUserDefaults defaults(store, folder.file("defaults.json"));
  const files::DefaultsWatch watch(defaults);
  const auto shows = [&](int value) {
    return support::runUntil([&] { return defaults.integer("a") == value; });
  };
  folder.write("synced.json", R"({"a":1})");
  EXPECT_TRUE(shows(1));
  folder.write("new.json", R"({"a":2})");
  std::filesystem::rename(folder.file("new.json"), folder.file("synced.json"));
  EXPECT_TRUE(shows(2));
  folder.write("new.json", R"({"a":3})");
  std::filesystem::rename(folder.file("new.json"), folder.file("defaults.json"));
  EXPECT_TRUE(shows(3)) << "it is no link any more";
}

} // namespace

} // namespace ondrel::platform
