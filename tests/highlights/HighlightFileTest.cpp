#include "highlights/HighlightStore.h"
#include "platform/linux/PosixFileStore.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ondrel::highlights {
namespace {

namespace fs = std::filesystem;
using Ids = std::set<std::string>;

PersistedHighlight highlight(std::string id, std::string exact = "words") {
  return {std::move(id), "T1", std::move(exact), "", "", 0, 1.5};
}

// The store on real files.
class HighlightFileTest : public testing::Test {
 protected:
  HighlightFileTest() { directories.support = folder.path(); }

  // A second process that saves highlights into the folder; what it writes comes out of the pipe.
  struct Probe {
    pid_t pid = -1;
    int output = -1;
  };
  Probe start(const std::string& name, const std::string& count, uid_t user = 0) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const auto pid = fork();
    if (pid == 0) {
      dup2(ends[1], STDOUT_FILENO);
      if (user && setuid(user) != 0)
        _exit(2);
      execl(HIGHLIGHT_PROBE, HIGHLIGHT_PROBE, folder.path().c_str(), name.c_str(), count.c_str(), nullptr);
      _exit(127);
    }
    close(ends[1]);
    return {pid, ends[0]};
  }
  // The ids that it said it had saved, after its end.
  Ids finish(const Probe& probe, int& status) {
    char buffer[4096];
    for (ssize_t got = 0; (got = read(probe.output, buffer, sizeof buffer)) > 0;)
      told.append(buffer, static_cast<std::size_t>(got));
    close(probe.output);
    waitpid(probe.pid, &status, 0);
    Ids saved;
    std::istringstream lines(std::exchange(told, {}));
    for (std::string line; std::getline(lines, line);)
      saved.insert(line);
    return saved;
  }
  void waitForFirstSave(const Probe& probe) {
    char letter = 0;
    if (read(probe.output, &letter, 1) == 1)
      told += letter;
  }
  static Ids ids(const HighlightStore& store) {
    Ids result;
    for (const auto& [messageId, each] : store.allHighlights())
      result.insert(each.id);
    return result;
  }
  // Of a file in the folder.
  Ids ids(const std::string& name) {
    support::FakeFiles one;
    one.files["/data/highlights.json"] = folder.content(name);
    return ids(HighlightStore(one, one));
  }

  std::string told; // by a probe
  support::LogCapture log;
  support::TemporaryFolder folder;
  support::FakeFiles directories;
  platform::PosixFileStore files;
};

TEST_F(HighlightFileTest, NothingSavedIsLostWhenTheProgramIsKilled) {
  std::mt19937 random(2026);
  Ids saved;
  int saves = 0;
  for (int round = 0; saves < 1000 && round < 1000; ++round) {
    const auto probe = start("r" + std::to_string(round), "1000000");
    waitForFirstSave(probe);
    usleep(random() % 300'000);
    kill(probe.pid, SIGKILL);
    int status = 0;
    const auto added = finish(probe, status);
    ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";
    saves += static_cast<int>(added.size());
    saved.insert(added.begin(), added.end());

    const HighlightStore store(directories, files);
    const auto found = ids(store);
    ASSERT_TRUE(std::ranges::includes(found, saved));
    ASSERT_LE(found.size(), saved.size() + 1) << "at most the one that was under way has come too";
    saved = found;
    ASSERT_FALSE(log.anyStartsWith("error"));
  }
  EXPECT_GE(saves, 1000);
  for (const auto& name : folder.names())
    EXPECT_TRUE(name == "highlights.json" || name.starts_with(".highlights.json.tmp-")) << name;
  EXPECT_LE(folder.names().size(), 2U);
}

TEST_F(HighlightFileTest, TwoCopiesAtOnceLoseNothingOfEachOther) {
  const auto one = start("one", "60");
  const auto two = start("two", "60");
  int status = 0;
  auto saved = finish(one, status);
  EXPECT_EQ(status, 0);
  saved.merge(finish(two, status));
  EXPECT_EQ(status, 0);
  EXPECT_EQ(saved.size(), 120U);
  Ids found;
  for (const auto& name : folder.names())
    found.merge(ids(name));
  EXPECT_EQ(found, saved);
  EXPECT_LE(folder.names().size(), 1U + platform::AsideFile::mostKept);
}

TEST_F(HighlightFileTest, AFullDiskLeavesTheLastSave) {
  if (mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=200k") != 0)
    GTEST_SKIP() << "mounting is not allowed here";
  struct Unmount {
    const std::string& path;
    ~Unmount() { umount2(path.c_str(), MNT_DETACH); }
  } unmount{folder.path()};

  folder.write("highlights.json", "{damaged");
  std::size_t saved = 0;
  {
    HighlightStore store(directories, files);
    for (; !log.anyStartsWith("error system: HighlightStore: save failed: ") && saved < 1000; ++saved)
      store.add(highlight(std::to_string(saved), std::string(1000, 'x')), "m@x");
    store.add(highlight("too much", std::string(1000, 'x')), "m@x");
    EXPECT_EQ(store.allHighlights().size(), saved + 1) << "memory keeps what the disk can't";
    EXPECT_EQ(ids("highlights.json").size(), saved - 1);
    EXPECT_EQ(folder.content("highlights.json.damaged-1"), "{damaged");
    EXPECT_EQ(folder.names().size(), 2U);
    for (std::size_t each = 0; each + 10 < saved; ++each)
      store.remove(std::to_string(each), "m@x");
  }
  EXPECT_EQ(ids("highlights.json").size(), 11U);

  // Full to the last byte from the beginning: the damaged file stays where it is.
  fs::remove(folder.file("highlights.json.damaged-1"));
  folder.write("highlights.json", "{damaged");
  folder.write("filling", std::string(1 << 20, 'x'));
  HighlightStore store(directories, files);
  store.add(highlight("new", "x"), "m@x");
  EXPECT_EQ(folder.content("highlights.json"), "{damaged");
  EXPECT_EQ(folder.names(), (Ids{"filling", "highlights.json"}));
  fs::remove(folder.file("filling"));
  store.add(highlight("newer", "x"), "m@x");
  EXPECT_EQ(folder.content("highlights.json.damaged-1"), "{damaged");
  EXPECT_EQ(ids("highlights.json"), (Ids{"new", "newer"}));
}

TEST_F(HighlightFileTest, AFolderWithoutRightsLeavesTheFile) {
  folder.write("highlights.json", "{}");
  fs::permissions(folder.path(), fs::perms(0555));
  int status = 0;
  // Nobody's, where we may do all.
  const auto saved = finish(start("x", "1", getuid() == 0 ? 65534 : 0), status);
  fs::permissions(folder.path(), fs::perms(0700));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
  EXPECT_TRUE(saved.empty());
  EXPECT_EQ(folder.content("highlights.json"), "{}");
  EXPECT_EQ(folder.names(), Ids{"highlights.json"});
}

TEST_F(HighlightFileTest, HoldsAHundredThousand) {
  std::string text = "{";
  for (int number = 0; number < 100'000; ++number)
    text +=
        (number ? ",\"" : "\"") + std::to_string(number) +
        R"(@x":[{"id":"a","threadId":"T","exact":"e","prefix":"","suffix":"","occurrenceIndex":0,"createdAt":1}])";
  folder.write("highlights.json", text + "}");
  HighlightStore store(directories, files);
  store.add(highlight("last"), "5@x");
  EXPECT_EQ(HighlightStore(directories, files).byMessageId(), store.byMessageId());
  EXPECT_EQ(store.allHighlights().size(), 100'001U);
  struct stat status{};
  ASSERT_EQ(stat(folder.file("highlights.json").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(HighlightFileTest, KeepsAFewVersionsOfOthersAndEachOnce) {
  HighlightStore store(directories, files);
  for (int version = 1; version <= platform::AsideFile::mostKept + 1; ++version) {
    const auto theirs = "theirs " + std::to_string(version);
    folder.write("theirs", theirs);
    // Each one newer than the one before, so that no clock's grain matters.
    fs::last_write_time(folder.file("theirs"),
                        fs::file_time_type::clock::now() + std::chrono::hours(version));
    fs::rename(folder.file("theirs"), folder.file("highlights.json"));
    store.add(highlight(std::to_string(version)), "m@x");
    store.remove("none", "m@x");
  }
  EXPECT_EQ(folder.content("highlights.json.other-1"), "theirs 5");
  EXPECT_EQ(folder.content("highlights.json.other-2"), "theirs 2");
  EXPECT_EQ(folder.names().size(), 1U + platform::AsideFile::mostKept);
  EXPECT_EQ(ids("highlights.json"), (Ids{"1", "2", "3", "4", "5"}));
}

} // namespace
} // namespace ondrel::highlights
