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

  // Opens the conversation with the attachments.
  void openConversation(Process& program) {
    main = signIn(program);
    press("j o");
    ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);
  }

  fs::path downloads;
  WindowId main = 0;
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
  const auto file = downloads / "Programme.pdf";
  for (const bool replaces : {false, true}) {
    if (replaces)
      write(file, "an earlier one");
    click(main, -368, 684); // the first one
    const auto panel = windowBeside({main});
    ASSERT_NE(panel, 0U) << program->output();
    focus(panel);
    press("Return");
    if (replaces) {
      const auto question = windowBeside({main, panel});
      ASSERT_NE(question, 0U) << "nobody asked whether to replace the file";
      focus(question);
      press("Return");
    }
    EXPECT_TRUE(eventually([&] { return read(file).contains("%%EOF"); })) << program->output();
    EXPECT_TRUE(read(file).starts_with("%PDF-"));
    ASSERT_TRUE(eventually([&] { return windows() == std::set{main}; }));
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(downloads), {}), 1);
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
