#include "async/VirtualEventLoop.h"
#include "highlights/file/HighlightStore.h"
#include "platform/linux/files/BackupFile.h"
#include "platform/linux/files/PosixFileStore.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/mount.h>
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
  Probe start(const std::string& name, const std::string& count) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const auto pid = fork();
    if (pid == 0) {
      dup2(ends[1], STDOUT_FILENO);
      execl(HIGHLIGHT_PROBE, HIGHLIGHT_PROBE, folder.path().c_str(), name.c_str(), count.c_str(), nullptr);
      _exit(127);
    }
    close(ends[1]);
    return {pid, ends[0]};
  }
  // The ids that it said it had saved, after its end; adds them to what it had told before.
  Ids finish(const Probe& probe, int& status, std::string told = {}) {
    char buffer[4096];
    for (ssize_t got = 0; (got = read(probe.output, buffer, sizeof buffer)) > 0;)
      told.append(buffer, static_cast<std::size_t>(got));
    close(probe.output);
    waitpid(probe.pid, &status, 0);
    Ids saved;
    std::istringstream lines(told);
    for (std::string line; std::getline(lines, line);)
      saved.insert(line);
    return saved;
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

  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::TemporaryFolder folder;
  support::FakeFiles directories;
  platform::files::PosixFileStore files;
};

TEST_F(HighlightFileTest, NothingSavedIsLostWhenTheProgramIsKilled) {
  std::mt19937 random(2026);
  Ids saved;
  int saves = 0;
  for (int round = 0; saves < 1000 && round < 1000; ++round) {
    const auto probe = start("r" + std::to_string(round), "1000000");
    std::string first(1, '\0');
    ASSERT_EQ(read(probe.output, first.data(), 1), 1);
    usleep(random() % 300'000);
    kill(probe.pid, SIGKILL);
    int status = 0;
    const auto added = finish(probe, status, first);
    ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";
    saves += static_cast<int>(added.size());
    saved.insert(added.begin(), added.end());

    const auto found = ids(HighlightStore(directories, files));
    ASSERT_TRUE(std::ranges::includes(found, saved));
    ASSERT_LE(found.size(), saved.size() + 1) << "at most the one that was under way has come too";
    saved = found;
    ASSERT_FALSE(log.anyStartsWith("error"));
  }
  EXPECT_GE(saves, 1000);
  EXPECT_LE(folder.names().size(), 2U) << "no more than the last save that broke off is left over";
}

TEST_F(HighlightFileTest, TwoCopiesAtOnceLoseNothingOfEachOtherBehindALinkToo) {
  for (const bool behindLink : {false, true}) {
    fs::create_directory(folder.file("synced"));
    if (behindLink)
      fs::create_symlink("synced/ours.json", folder.file("highlights.json"));
    const auto one = start("one", "60");
    const auto two = start("two", "60");
    int status = 0;
    auto saved = finish(one, status);
    EXPECT_EQ(status, 0);
    saved.merge(finish(two, status));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(saved.size(), 120U);
    EXPECT_EQ(ids("highlights.json"), saved);
    EXPECT_EQ(fs::is_symlink(folder.file("highlights.json")), behindLink);
    EXPECT_EQ(folder.names(), (Ids{"highlights.json", "synced"})) << "nothing is set aside";
    fs::remove(folder.file("highlights.json"));
  }
}

TEST_F(HighlightFileTest, AFullDiskLeavesTheLastSave) {
  if (mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=200k") != 0)
    GTEST_SKIP() << "mounting is not allowed here";
  struct Unmount {
    const std::string& path;
    ~Unmount() { umount2(path.c_str(), MNT_DETACH); }
  } unmount{folder.path()};

  // Full to the last byte from the beginning: the damaged file stays where it is.
  folder.write("highlights.json", "{damaged");
  folder.write("filling", std::string(1 << 20, 'x'));
  HighlightStore store(directories, files);
  const auto add = [&](const std::string& id) { store.add(highlight(id, std::string(1000, 'x')), "m@x"); };
  add("0");
  EXPECT_EQ(folder.content("highlights.json"), "{damaged");
  EXPECT_EQ(folder.names(), (Ids{"filling", "highlights.json"}));
  fs::remove(folder.file("filling"));
  support::LogCapture::lines().clear();

  std::size_t saved = 1;
  for (; !log.anyStartsWith("error system: HighlightStore: save failed: ") && saved < 1000; ++saved)
    add(std::to_string(saved));
  add("too much");
  EXPECT_EQ(store.allHighlights().size(), saved + 1) << "memory keeps what the disk can't";
  EXPECT_EQ(ids("highlights.json").size(), saved - 1);
  EXPECT_EQ(folder.content("highlights.json.damaged-1"), "{damaged");
  EXPECT_EQ(folder.names().size(), 2U);
  for (std::size_t each = 0; each + 10 < saved; ++each)
    store.remove(std::to_string(each), "m@x");
  EXPECT_EQ(ids("highlights.json").size(), 11U);
}

TEST_F(HighlightFileTest, KeepsAFewDamagedVersionsAndEachOnce) {
  HighlightStore store(directories, files);
  for (int version = 1; version <= platform::files::BackupFile::mostKept + 1; ++version) {
    folder.write("theirs", "theirs " + std::to_string(version));
    // Each one newer than the one before, so that no clock's grain matters.
    fs::last_write_time(folder.file("theirs"),
                        fs::file_time_type::clock::now() + std::chrono::hours(version));
    fs::rename(folder.file("theirs"), folder.file("highlights.json"));
    store.add(highlight(std::to_string(version)), "m@x");
    store.remove("none", "m@x");
  }
  EXPECT_EQ(folder.content("highlights.json.damaged-1"), "theirs 5");
  EXPECT_EQ(folder.content("highlights.json.damaged-2"), "theirs 2");
  EXPECT_EQ(folder.names().size(), 1U + platform::files::BackupFile::mostKept);
  EXPECT_EQ(ids("highlights.json"), (Ids{"1", "2", "3", "4", "5"}));
}

} // namespace
} // namespace ondrel::highlights
