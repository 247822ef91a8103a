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
    // Where the panel opens first.
    before_ = fs::current_path();
    fs::current_path(downloads);
    write(profile / "config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + downloads.string() + "\"\n");
  }

  void TearDown() override {
    if (!before_.empty())
      fs::current_path(before_);
    UserHandsTest::TearDown();
  }

  // Opens the conversation with the attachments.
  void openConversation(Process& program) {
    main = signIn(program);
    press("j o");
    ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);
  }

  fs::path downloads;
  WindowId main = 0;

 private:
  fs::path before_;
};

TEST_F(DownloadTest, AMessageGoesToTheDownloadsFolderUnderItsTitle) {
  const auto program = start();
  openConversation(*program);
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

TEST_F(DownloadTest, AnAttachmentGoesWhereThePanelSays) {
  const auto program = start({}, wholeStacks);
  openConversation(*program);
  click(main, -368, 684); // the first one
  const auto panel = windowBeside({main});
  ASSERT_NE(panel, 0U) << program->output();
  focus(panel);
  press("Return");
  const auto file = downloads / "Programme.pdf";
  EXPECT_TRUE(eventually([&] { return read(file).contains("%%EOF"); })) << program->output();
  EXPECT_TRUE(read(file).starts_with("%PDF-"));
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
