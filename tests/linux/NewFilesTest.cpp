#include "async/Scope.h"
#include "platform/linux/files/GioNewFiles.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/MainLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace ondrel::platform {

using enum NewFiles::Existing;

// Tells "" when all went well, else what the user is told. Without an end the file is given up.
async::Task<void> writeFile(std::string path, NewFiles::Existing existing, std::vector<std::string> pieces,
                            bool ends, std::optional<std::string>& told) {
  files::GioNewFiles files;
  auto file = co_await files.create(path, existing);
  std::expected<void, std::string> done;
  if (!file)
    done = std::unexpected(file.error());
  for (auto& piece : pieces)
    if (done)
      done = co_await (*file)->write(std::move(piece));
  if (done && ends)
    done = co_await (*file)->finish();
  told = done ? "" : done.error();
}

// As one message that is saved twice.
async::Task<void> writeTogether(std::string path, NewFiles::Existing existing, std::string& told) {
  files::GioNewFiles files;
  std::vector<std::unique_ptr<NewFile>> both;
  for (const auto* content : {"first", "second"}) {
    auto file = co_await files.create(path, existing);
    co_await (*file)->write(content);
    both.push_back(std::move(*file));
  }
  for (auto& file : both) {
    const auto done = co_await file->finish();
    told += done ? "written " : "refused ";
  }
}

TEST(NewFilesTest, AreThereWholeOrNotAtAll) {
  glib::GlibEventLoop loop;
  support::TemporaryFolder folder;
  const auto write = [&](const char* name, auto existing, std::vector<std::string> pieces, bool ends = true) {
    std::optional<std::string> told;
    async::Scope scope;
    scope.spawn(writeFile(folder.file(name), existing, std::move(pieces), ends, told));
    support::runUntil([&] { return told.has_value(); });
    return told.value_or("never");
  };
  const std::string large(1500000, 'x');
  EXPECT_EQ(write("made/file", stays, {"a", large, large, "b"}), "");
  EXPECT_EQ(folder.content("made/file"), "a" + large + large + "b");
  EXPECT_EQ(write("made/file", isReplaced, {}), "");
  EXPECT_EQ(folder.content("made/file"), "");
  EXPECT_EQ(write("made/file", stays, {}), "Can't replace " + folder.file("made/file") + ": File exists");
  EXPECT_EQ(write("given up", stays, {large, large}, false), "");
  std::filesystem::create_symlink("nowhere", folder.file("link"));
  EXPECT_FALSE(write("link/file", stays, {"new"}).empty());
  const auto writeBoth = [&](const char* name, auto existing) {
    std::string told;
    async::Scope scope;
    scope.spawn(writeTogether(folder.file(name), existing, told));
    support::runUntil([&] { return scope.active() == 0; });
    return told + folder.content(name);
  };
  EXPECT_EQ(writeBoth("made/one", stays), "written refused first");
  EXPECT_EQ(writeBoth("made/another", isReplaced), "written written second");

  rlimit old{};
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{2000000, old.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const auto full = write("full", stays, {large, large, large});
  setrlimit(RLIMIT_FSIZE, &old);
  EXPECT_EQ(full, "Can't write " + folder.file("full") + ": File too large");
  EXPECT_EQ(folder.names(), (std::set<std::string>{"link", "made"})) << "nothing is left";
}

} // namespace ondrel::platform
