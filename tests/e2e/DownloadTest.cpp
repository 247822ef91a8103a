// What the page hands over for the user's disk: a message's own file, and an attachment.
#include "UserHandsTest.h"

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;

using DownloadTest = UserHandsTest;

TEST_F(DownloadTest, AMessageGoesToTheFolderUnderItsTitleAndAnAttachmentWhereThePanelSays) {
  const auto downloads = profile / "downloads";
  fs::create_directory(downloads);
  write(profile / "config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + downloads.string() + "\"\n");
  const auto program = start({}, wholeStacks);
  const auto main = signIn(*program);
  press("j o");
  ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);

  const auto message = downloads / "Plans for the spring workshop.eml";
  write(message, "an earlier one");
  // The fourth button in the head of the message, below the other three of the conversation.
  click(main, -90, 224);
  EXPECT_TRUE(eventually([&] { return read(message).starts_with("From: Nadia Okafor <nadia.okafor@"); }))
      << program->output();
  EXPECT_TRUE(read(message).contains("<p>Dear both,</p>")) << read(message);
  EXPECT_EQ(windows(), std::set{main}) << "nothing opens for it";

  click(main, -368, 684); // the first attachment
  const auto panel = windowBeside({main});
  ASSERT_NE(panel, 0U) << program->output();
  focus(panel);
  press("Return");
  EXPECT_TRUE(eventually([&] { return read(downloads / "Programme.pdf").contains("%%EOF"); }))
      << program->output();
  // The folder in which it was written goes when the file has left it.
  EXPECT_TRUE(eventually([&] { return std::distance(fs::directory_iterator(downloads), {}) == 2; }))
      << "something is left beside them";
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
