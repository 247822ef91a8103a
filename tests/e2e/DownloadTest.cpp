// What the page hands over for the user's disk: a message's own file, and an attachment.
#include "UserHandsTest.h"

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;

class DownloadTest : public UserHandsTest {
 protected:
  void SetUp() override {
    UserHandsTest::SetUp();
    downloads = profile / "downloads";
    fs::create_directory(downloads);
    write(profile / "config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + downloads.string() + "\"\n");
  }

  fs::path downloads;
};

TEST_F(DownloadTest, AMessageGoesToTheDownloadsFolderUnderItsTitle) {
  const auto program = start();
  const auto main = signIn(*program);
  press("j o");
  ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);
  const auto file = downloads / "Plans for the spring workshop.eml";
  write(file, "an earlier one");
  // The fourth button in the head of the message, below the other three of the conversation.
  click(main, -90, 224);
  EXPECT_TRUE(eventually([&] { return read(file).starts_with("From: Nadia Okafor <nadia.okafor@"); }))
      << program->output();
  EXPECT_TRUE(read(file).contains("<p>Dear both,</p>")) << read(file);
  EXPECT_EQ(windows(), std::set{main}) << "nothing opens for it";
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
