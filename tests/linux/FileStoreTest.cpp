#include "platform/linux/files/GioUserFolders.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/MainLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace ondrel::platform {

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

unsigned mode(const std::string& path) {
  struct stat status{};
  return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class FileStoreTest : public testing::Test {
 protected:
  support::TemporaryFolder folder;
  files::PosixFileStore store;
};

TEST_F(FileStoreTest, SavesForTheUserAlone) {
  const auto old = umask(0);
  const auto path = folder.file("a/b/session.json");
  ASSERT_TRUE(store.writeAtomically(path, "one"));
  fs::permissions(path, fs::perms(0644));
  const std::string binary("two\0\xff\n", 6);
  ASSERT_TRUE(store.writeAtomically(path, binary));
  umask(old);

  EXPECT_EQ(store.read(path), binary);
  EXPECT_EQ(mode(path), 0600U);
  EXPECT_EQ(mode(folder.file("a")), 0700U);
  EXPECT_EQ(mode(folder.file("a/b")), 0700U);
  ASSERT_TRUE(store.writeAtomically(path, ""));
  EXPECT_EQ(store.read(path), "");
}

TEST_F(FileStoreTest, ReplacesALinkAndLeavesItsTarget) {
  folder.write("elsewhere", "theirs");
  fs::create_symlink(folder.file("elsewhere"), folder.file("session.json"));
  ASSERT_TRUE(store.writeAtomically(folder.file("session.json"), "ours"));
  EXPECT_FALSE(fs::is_symlink(folder.file("session.json")));
  EXPECT_EQ(folder.content("session.json"), "ours");
  EXPECT_EQ(folder.content("elsewhere"), "theirs");
}

TEST_F(FileStoreTest, RewritesTheTargetOfALinkInItsMode) {
  fs::create_directory(folder.file("elsewhere"));
  folder.write("elsewhere/shared.json", "old");
  fs::permissions(folder.file("elsewhere/shared.json"), fs::perms(0640));
  fs::create_symlink("elsewhere/link", folder.file("shared.json"));
  fs::create_symlink("shared.json", folder.file("elsewhere/link"));
  const auto old = umask(077);
  ASSERT_TRUE(store.rewriteShared(folder.file("shared.json"), "new"));
  umask(old);
  EXPECT_TRUE(fs::is_symlink(folder.file("shared.json")));
  EXPECT_EQ(folder.content("elsewhere/shared.json"), "new");
  EXPECT_EQ(mode(folder.file("elsewhere/shared.json")), 0640U);

  fs::permissions(folder.file("elsewhere/shared.json"), fs::perms(0400));
  EXPECT_FALSE(store.rewriteShared(folder.file("shared.json"), "newer"));
  EXPECT_EQ(folder.content("elsewhere/shared.json"), "new");
  EXPECT_FALSE(store.rewriteShared(folder.file("elsewhere"), "x"));
  fs::create_symlink("round", folder.file("round"));
  EXPECT_FALSE(store.rewriteShared(folder.file("round"), "x"));
  fs::create_symlink("to come", folder.file("dangling"));
  ASSERT_TRUE(store.rewriteShared(folder.file("dangling"), "x"));
  EXPECT_EQ(mode(folder.file("to come")), 0600U);
}

TEST_F(FileStoreTest, ReplacesWhatOthersSaveOnlyWhenTheyWereSeen) {
  const auto path = folder.file("ours.json");
  std::vector<std::string> seen;
  std::function<void()> meanwhile = [] {};
  const auto make = [&](const std::expected<std::string, FileError>* other) {
    seen.push_back(other ? other->value_or("unreadable") : "nothing");
    std::exchange(meanwhile, [] {})();
    return FileStore::Content{"ours " + seen.back(), seen.back() == "damaged"};
  };
  std::optional<FileVersion> known;
  ASSERT_TRUE(store.replaceShared(path, make, known));
  ASSERT_TRUE(store.replaceShared(path, make, known));
  EXPECT_EQ(seen, (std::vector<std::string>{"nothing", "nothing"}));
  meanwhile = [&] { ASSERT_TRUE(store.writeAtomically(path, "theirs")); };
  ASSERT_TRUE(store.replaceShared(path, make, known));
  EXPECT_EQ(folder.content("ours.json"), "ours theirs");

  // Behind a link, whose target has a mode of its own.
  fs::create_directory(folder.file("synced"));
  folder.write("synced/real", "damaged");
  fs::permissions(folder.file("synced/real"), fs::perms(0640));
  fs::create_symlink("synced/real", folder.file("link"));
  known = {};
  const auto kept = folder.file("synced/real.damaged-1");
  EXPECT_EQ(store.replaceShared(folder.file("link"), make, known).value(), kept);
  EXPECT_TRUE(fs::is_symlink(folder.file("link")));
  EXPECT_EQ(folder.content("synced/real"), "ours damaged");
  EXPECT_EQ(mode(folder.file("synced/real")), 0640U);
  EXPECT_EQ(folder.content("synced/real.damaged-1"), "damaged");
  folder.write("link.other-1", "older");
  fs::last_write_time(folder.file("link.other-1"), fs::file_time_type::clock::now() - std::chrono::hours(1));
  folder.write("link.other-x", "no number");
  const auto beside = store.keptAside(folder.file("link"));
  EXPECT_EQ(Names(beside.begin(), beside.end()), (Names{kept, folder.file("link.other-1")}));

  fs::create_symlink("missing/real", folder.file("astray"));
  EXPECT_FALSE(store.replaceShared(folder.file("astray"), make, known)) << "a disk that isn't there";
  EXPECT_FALSE(fs::exists(folder.file("missing")));
}

TEST_F(FileStoreTest, TellsWhatCannotBeDone) {
  folder.write("file", "x");
  fs::create_directory(folder.file("folder"));
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);

  EXPECT_TRUE(store.read(folder.file("missing")).error().notFound);
  EXPECT_FALSE(store.read(folder.file("folder")).error().notFound);
  EXPECT_FALSE(store.read(folder.file("pipe")).has_value()); // and doesn't hang
  EXPECT_FALSE(store.writeAtomically(folder.file("file/below"), "y").has_value());
  EXPECT_FALSE(store.writeAtomically(folder.file("folder"), "y").has_value());
  EXPECT_FALSE(store.writeAtomically(folder.file(std::string(256, 'n')), "y").has_value());
  EXPECT_EQ(folder.content("file"), "x");
  EXPECT_EQ(folder.names(), (Names{"file", "folder", "pipe"}));
}

TEST_F(FileStoreTest, RemovesFoldersAndNotWhatTheirLinksPointTo) {
  folder.write("theirs", "x");
  fs::create_directories(folder.file("ours/deep"));
  fs::create_symlink(folder.path(), folder.file("ours/deep/link"));
  EXPECT_TRUE(store.removeRecursively(folder.file("ours")));
  EXPECT_TRUE(store.removeRecursively(folder.file("ours")));
  EXPECT_EQ(folder.names(), Names{"theirs"});
}

TEST_F(FileStoreTest, UserFoldersTellOfWhatComesAndGoes) {
  const glib::GlibEventLoop loop;
  const auto watched = folder.file("Scripts");
  bool told = false;
  const auto watch = files::GioUserFolders().watch(watched, [&] { told = true; });
  const auto tells = [&](const auto& change) {
    support::runFor(std::chrono::milliseconds(50));
    told = false;
    change();
    return support::runUntil([&] { return told; }, std::chrono::seconds(2));
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(tells([&] { fs::create_directory(watched); }));
    EXPECT_TRUE(tells([&] { folder.write("Scripts/a.js", ""); }));
    EXPECT_TRUE(tells([&] { fs::rename(watched + "/a.js", folder.file("b.js")); }));
    EXPECT_TRUE(tells([&] { fs::remove(watched); }));
  }
}

TEST_F(FileStoreTest, SweepsLeftoversButNoneOfALivingSaveOrOfOthers) {
  folder.write(".session.json.tmp-0a1b2c", "left over");
  folder.write(".session.json.tmp-notours", "x");
  folder.write(".other.json.tmp-0a1b2c", "x");
  ASSERT_TRUE(store.writeAtomically(folder.file("session.json"), "new"));
  EXPECT_EQ(folder.names(), (Names{".session.json.tmp-notours", ".other.json.tmp-0a1b2c", "session.json"}));
}

} // namespace

} // namespace ondrel::platform
