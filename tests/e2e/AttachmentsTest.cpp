// The window of all attachments, from its opening to a file on the disk.
#include "UserHandsTest.h"

namespace ondrel::e2e {
namespace {

using namespace std::chrono_literals;

namespace fs = std::filesystem;

using AttachmentsTest = UserHandsTest;

TEST_F(AttachmentsTest, AFileIsFoundLookedAtAndComesWhole) {
  const auto downloads = profile / "downloads";
  write(profile / "config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + downloads.string() + "\"\n");
  const auto program = start({}, wholeStacks);
  order("/control/attachments", {{"count", 200}});
  const auto main = signIn(*program);
  press("ctrl+shift+a");
  const auto files = windowBeside({main});
  ASSERT_NE(files, 0U) << program->output();
  EXPECT_EQ(title(files), "Attached Files");
  focus(files);
  type("NOTES");
  // From the search to the same row each time, until there are rows.
  ASSERT_TRUE(eventually([&] {
    focus(files);
    press("ctrl+f Down space");
    // A second one closes what the first one has opened late.
    return eventually([&] { return windows().size() == 3; }, 5s);
  })) << program->output();
  const auto preview = windowBeside({main, files});
  const auto name = title(preview);
  EXPECT_TRUE(name.starts_with("Notes ") && name.ends_with(".txt")) << name;
  focus(preview);
  press("Escape");
  EXPECT_TRUE(eventually([&] { return windows() == std::set{main, files}; }));
  focus(files);
  press("ctrl+s");
  EXPECT_TRUE(eventually([&] {
    const auto text = read(downloads / name);
    return text.starts_with("Größe, žluť, 北京, עברית\nNote ") && text.ends_with("\n");
  })) << read(downloads / name);
  // The folder in which it was written goes when the file has left it.
  EXPECT_TRUE(eventually([&] { return std::distance(fs::directory_iterator(downloads), {}) == 1; }))
      << "something is left beside it";
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
