#include "async/VirtualEventLoop.h"
#include "base/Log.h"
#include "platform/linux/files/JsonUserDefaults.h"
#include "platform/linux/files/PosixFileStore.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace ondrel::platform {

namespace {

using Names = std::set<std::string>;

// Counts saves, and fails them on demand.
class CountingStore final : public FileStore {
 public:
  int saves = 0;
  bool failing = false;

  std::expected<std::string, FileError> read(const std::string& path) override { return files_.read(path); }
  std::expected<void, FileError> writeAtomically(const std::string& path, std::string_view content) override {
    ++saves;
    if (failing)
      return std::unexpected(FileError{false, "disk full"});
    return files_.writeAtomically(path, content);
  }
  std::expected<void, FileError> rewriteShared(const std::string& path, std::string_view content) override {
    return writeAtomically(path, content);
  }
  std::expected<std::optional<std::string>, FileError>
  replaceShared(const std::string& path, const MakeContent& make,
                std::optional<FileVersion>& known) override {
    return files_.replaceShared(path, make, known);
  }
  std::optional<FileVersion> version(const std::string& path) override { return files_.version(path); }
  std::expected<std::string, FileError> keepAside(const std::string& path) override {
    if (failing)
      return std::unexpected(FileError{false, "disk full"});
    return files_.keepAside(path);
  }
  std::vector<std::string> keptAside(const std::string& path) override { return files_.keptAside(path); }
  bool exists(const std::string& path) override { return files_.exists(path); }
  std::expected<void, FileError> removeRecursively(const std::string& path) override {
    return files_.removeRecursively(path);
  }

 private:
  files::PosixFileStore files_;
};

std::vector<std::string> errors;

class UserDefaultsTest : public testing::Test {
 protected:
  UserDefaultsTest() {
    errors.clear();
    base::setLogSink([](base::LogLevel level, std::string_view, std::string_view message) {
      if (level == base::LogLevel::error)
        errors.emplace_back(message);
    });
  }
  ~UserDefaultsTest() override { base::setLogSink(nullptr); }

  std::unique_ptr<files::JsonUserDefaults> open() {
    return std::make_unique<files::JsonUserDefaults>(store, folder.file("defaults.json"));
  }

  async::VirtualEventLoop loop;
  support::TemporaryFolder folder;
  CountingStore store;
};

TEST_F(UserDefaultsTest, KeepsEachTypeAndSavesOnceATurn) {
  auto defaults = open();
  EXPECT_TRUE(errors.empty()) << "a missing file is no error";
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
  EXPECT_EQ(store.saves, 0);
  loop.runUntilIdle();
  EXPECT_EQ(store.saves, 1);
  EXPECT_EQ(folder.content("defaults.json"), "{\n"
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
  EXPECT_EQ(store.saves, 2);

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
  folder.write("defaults.json",
               R"({"theirs":{"deep":[1,{"x":null}],"big":18446744073709551615},"_runJS":"yes"})");
  const auto defaults = open();
  EXPECT_EQ(defaults->boolean("_runJS"), std::nullopt);
  defaults->set("ours", 1);
  defaults->flush();
  EXPECT_EQ(folder.content("defaults.json"), R"({
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

TEST_F(UserDefaultsTest, KeepsADamagedFileAsideBeforeItSaves) {
  const std::vector<std::string> damaged = {"",
                                            "{",
                                            "[1]",
                                            "null",
                                            "{\"a\":1}}",
                                            "{\"a\":nan}",
                                            "\xff\xfe",
                                            "{\"a\":\"\xff\"}",
                                            "{\"a\":" + std::string(100, '[') + "1" + std::string(100, ']') +
                                                "}",
                                            std::string(files::JsonUserDefaults::largestFile + 1, ' ')};
  for (const auto& content : damaged) {
    errors.clear();
    folder.write("defaults.json", content);
    const auto defaults = open();
    EXPECT_EQ(errors.size(), 1U) << content.substr(0, 40);
    EXPECT_EQ(folder.content("defaults.json"), content)
        << "nothing is touched before something is to be saved";
    defaults->set("a", 2);
    loop.runUntilIdle();
    EXPECT_EQ(folder.content("defaults.json"), "{\n  \"a\": 2\n}\n");
    EXPECT_EQ(folder.content("defaults.json.damaged-1"), content);
    std::filesystem::remove(folder.file("defaults.json.damaged-1"));
  }
}

TEST_F(UserDefaultsTest, WorksInMemoryAndSavesLaterWhereItCannotSave) {
  folder.write("defaults.json", "damaged");
  auto defaults = open();
  errors.clear();
  store.failing = true;
  for (int i = 0; i < 3; ++i) {
    defaults->set("a", i);
    loop.runUntilIdle();
  }
  EXPECT_EQ(defaults->integer("a"), 2);
  EXPECT_EQ(errors.size(), 1U) << "one line, not one for each save";
  EXPECT_EQ(folder.content("defaults.json"), "damaged") << "never replaced without being kept";

  store.failing = false;
  loop.advance(RetriedSave::firstRetry);
  EXPECT_EQ(folder.names(), (Names{"defaults.json", "defaults.json.damaged-1"})) << "without another change";

  store.failing = true;
  defaults->set("a", 4);
  loop.runUntilIdle();
  store.failing = false;
  defaults = nullptr; // a normal end
  EXPECT_EQ(open()->integer("a"), 4);
}

} // namespace

} // namespace ondrel::platform
