#include "platform/linux/files/PendingFile.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <sys/stat.h>
#include <thread>

namespace ondrel::platform {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

class PendingFileTest : public testing::Test {
 protected:
  std::optional<files::PendingFile> make(const std::string& name) {
    auto made = files::PendingFile::make(folder.file(name));
    if (!made)
      return std::nullopt;
    std::ofstream(made->path()) << "new";
    return std::move(*made);
  }

  support::TemporaryFolder folder;
};

TEST_F(PendingFileTest, TakesThePlaceOfAFileOnlyWhenItIsMoved) {
  folder.write("there", "old");
  fs::create_symlink("there", folder.file("link"));
  chmod(folder.file("there").c_str(), 0751);
  EXPECT_TRUE(make("there"));
  EXPECT_EQ(folder.content("there"), "old");
  EXPECT_EQ(folder.names(), (Names{"link", "there"})) << "nothing is left of one that was given up";

  for (const auto* name : {"there", "free", "link"}) {
    auto file = make(name);
    ASSERT_TRUE(file) << name;
    EXPECT_TRUE(file->moveIntoPlace()) << name;
    EXPECT_EQ(folder.content(name), "new") << name;
  }
  EXPECT_EQ(folder.names(), (Names{"free", "link", "there"}));
  EXPECT_EQ(fs::status(folder.file("there")).permissions(), fs::perms(0640)) << "but for being a program";
  EXPECT_FALSE(fs::is_symlink(folder.file("link")));
}

TEST_F(PendingFileTest, ReplacesNothingThatNobodyAgreedTo) {
  fs::create_directory(folder.file("folder"));
  for (const auto& place : {folder.file("folder"), folder.file("missing/file"), std::string("relative"),
                            std::string(), std::string("/tmp/\xFF"), std::string("/tmp/\0x", 7)}) {
    const auto made = files::PendingFile::make(place);
    ASSERT_FALSE(made) << place;
    EXPECT_FALSE(made.error().empty());
  }
  auto file = make("free");
  ASSERT_TRUE(file);
  folder.write("free", "came meanwhile");
  EXPECT_FALSE(file->moveIntoPlace());
  EXPECT_EQ(folder.content("free"), "came meanwhile");
}

TEST_F(PendingFileTest, RemovesWhatACrashHasLeftAndNothingElse) {
  for (const auto* name : {".ondrel-a1B2c3", ".ondrel-settings", "ondrel-a1B2c3"})
    fs::create_directory(folder.file(name));
  folder.write(".ondrel-a1B2c3/file.part", "left over");
  folder.write(".ondrel-a1B2c4", "a file");
  const auto running = make("one");
  ASSERT_TRUE(running && make("two"));
  EXPECT_TRUE(fs::exists(running->path()));
  EXPECT_EQ(folder.names().size(), 4U);
  EXPECT_FALSE(fs::exists(folder.file(".ondrel-a1B2c3")));
}

TEST_F(PendingFileTest, KeepsItsFolderWhileOthersSweep) {
  std::atomic<int> lost = 0;
  const auto work = [&](const std::string& name) {
    for (int i = 0; i < 1000; ++i) {
      const auto file = make(name);
      lost += file && fs::exists(file->path()) ? 0 : 1;
    }
  };
  {
    const std::jthread one(work, "one"), two(work, "two");
  }
  EXPECT_EQ(lost, 0);
}

} // namespace
} // namespace ondrel::platform
