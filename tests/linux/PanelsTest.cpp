#include "DesktopTest.h"

#include "async/Scope.h"
#include "platform/linux/desktop/LinuxClipboard.h"
#include "platform/linux/files/XdgDirectories.h"
#include "platform/linux/windows/LinuxPanels.h"
#include "support/FakeDesktop.h"
#include "support/TemporaryFolder.h"

namespace ondrel::platform {

namespace {

AdwMessageDialog* openDialog() {
  auto* topLevels = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(topLevels); ++i) {
    const auto window = glib::adopt(GTK_WINDOW(g_list_model_get_item(topLevels, i)));
    if (ADW_IS_MESSAGE_DIALOG(window.get()))
      return ADW_MESSAGE_DIALOG(window.get());
  }
  return nullptr;
}

async::Task<void> ask(windows::LinuxPanels& panels, Alert alert, std::shared_ptr<Window> parent,
                      int& answer) {
  const int pressed = co_await panels.runAlert(std::move(alert), std::move(parent));
  answer = pressed;
}

async::Task<void> read(desktop::LinuxClipboard& clipboard, std::optional<std::string>& text, bool& done) {
  auto got = co_await clipboard.readString();
  text = std::move(got);
  done = true;
}

class PanelsTest : public DesktopTest {
 protected:
  void open(std::vector<std::string> buttons, std::shared_ptr<Window> parent) {
    answer = 0;
    task =
        scope.spawn(ask(panels, {.messageText = "A & <b>?", .informativeText = "x\xff", .buttons = buttons},
                        std::move(parent), answer));
    ASSERT_TRUE(until([] { return openDialog() != nullptr; }));
  }
  bool answered() {
    return until([this] { return task.done() && !openDialog(); });
  }

  support::FakeDefaults defaults;
  files::XdgDirectories directories;
  windows::LinuxPanels panels{
      {.defaults = defaults, .directories = directories, .saveFolderKey = "save", .openFolderKey = "open"}};
  int answer = 0;
  async::TaskHandle task;
  async::Scope scope;
};

TEST_F(PanelsTest, AnswerWithTheButtonThatWasPressed) {
  run([this] {
    const auto a = make("a");
    a->present();
    open({"_Yes", "Not Now", "Cancel"}, a);
    EXPECT_STREQ(adw_message_dialog_get_heading(openDialog()), "A & <b>?");
    EXPECT_STREQ(adw_message_dialog_get_body(openDialog()), "x\uFFFD");
    EXPECT_STREQ(adw_message_dialog_get_response_label(openDialog(), "0"), "__Yes");
    EXPECT_STREQ(adw_message_dialog_get_default_response(openDialog()), "0");
    EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(openDialog())), windows::topLevelOf(a));
    adw_message_dialog_response(openDialog(), "1");
    EXPECT_TRUE(answered());
    EXPECT_EQ(answer, Panels::firstButton + 1);

    open({"Yes", "No"}, nullptr);
    gtk_window_close(GTK_WINDOW(openDialog())); // Escape does the same
    EXPECT_TRUE(answered());
    EXPECT_EQ(answer, Panels::firstButton + 1);

    open({"Cancel", "Remove All"}, nullptr);
    EXPECT_STREQ(adw_message_dialog_get_default_response(openDialog()), "0");
    gtk_window_close(GTK_WINDOW(openDialog()));
    EXPECT_TRUE(answered());
    EXPECT_EQ(answer, Panels::firstButton) << "who dismisses it doesn't agree";

    task = scope.spawn(ask(panels,
                           {.messageText = "Leave?",
                            .informativeText = "",
                            .buttons = {"Stay", "Leave"},
                            .escapeButton = "Stay"},
                           nullptr, answer));
    ASSERT_TRUE(until([] { return openDialog() != nullptr; }));
    gtk_window_close(GTK_WINDOW(openDialog()));
    EXPECT_TRUE(answered());
    EXPECT_EQ(answer, Panels::firstButton) << "nor who dismisses what names its own safe answer";

    open({"Cancel", "Remove All"}, a);
    a->close(); // takes its dialog with it
    EXPECT_TRUE(answered());
    EXPECT_EQ(answer, Panels::firstButton);

    open({"Yes", "No"}, nullptr);
    task.cancel();
    EXPECT_TRUE(answered());
    EXPECT_EQ(answer, Panels::firstButton + 1);

    open({}, a); // the parent is closed
    EXPECT_STREQ(adw_message_dialog_get_response_label(openDialog(), "0"), "OK");
  }); // and the dialog is open when all ends
}

TEST(PanelFolders, StartWhereTheLastOneWasOrInDownloads) {
  const support::TemporaryFolder folder;
  support::FakeFiles user;
  user.downloadsFolder = folder.file("Downloads");
  support::FakeDefaults defaults;
  windows::PanelFolders folders(defaults, user);
  EXPECT_EQ(folders.start("save"), folder.file("Downloads"));
  EXPECT_EQ(folder.names().size(), 1U) << "what is missing is made";
  std::filesystem::create_directory(folder.file("letters"));
  folders.remember("save", folder.file("letters/one.pdf"));
  EXPECT_EQ(windows::PanelFolders(defaults, user).start("save"), folder.file("letters"));
  EXPECT_EQ(folders.start("open"), folder.file("Downloads")) << "each kind for itself";
  std::filesystem::remove(folder.file("letters"));
  EXPECT_EQ(folders.start("save"), folder.file("Downloads"));
  user.downloadsFolder = "/proc/none";
  EXPECT_EQ(folders.start("save"), user.home());
}

TEST_F(PanelsTest, ClipboardGivesBackWhatItGot) {
  run([this] {
    desktop::LinuxClipboard clipboard;
    for (const auto* text : {"", "https://app.fastmail.com/mail/ä", "bad \xff"}) {
      clipboard.writeString(text);
      std::optional<std::string> got;
      bool done = false;
      const auto reading = scope.spawn(read(clipboard, got, done));
      ASSERT_TRUE(until([&] { return done; }));
      EXPECT_EQ(got, std::string(text) == "bad \xff" ? "bad \uFFFD" : text);
    }
  });
}

} // namespace

} // namespace ondrel::platform
