#include "ui/highlights/TransferProgressWindow.h"

#include "ShellTest.h"

namespace ondrel::ui {
namespace {

using namespace std::chrono_literals;
using highlights::TransferProgress;
using Step = TransferProgress::Step;

class TransferProgressWindowTest : public ShellTest {
 protected:
  GtkWidget* window() { return GTK_WIDGET(shown.window()); }
  bool shows(const std::string& text) { return std::ranges::count(visibleTexts(window()), text) == 1; }

  base::Observable<std::optional<TransferProgress>> progress;
  int stops = 0;
  TransferProgressWindow shown{
      {.title = "Exporting Highlights", .progress = progress, .stop = [this] { ++stops; }},
      [] { return nullptr; }};
};

TEST_F(TransferProgressWindowTest, IsThereWhileTheWorkTakesLong) {
  progress.set(TransferProgress{Step::reading, 0, 0});
  shell.loop.advance(400ms);
  progress.set(std::nullopt);
  shell.loop.advance(1s);
  EXPECT_EQ(shown.window(), nullptr) << "it was over at once";

  progress.set(TransferProgress{Step::asking, 0, 300});
  shell.loop.advance(400ms);
  progress.set(TransferProgress{Step::asking, 0, 301});
  EXPECT_EQ(shown.window(), nullptr);
  shell.loop.advance(200ms);
  ASSERT_NE(shown.window(), nullptr) << "what goes on doesn't put it off";
  EXPECT_STREQ(gtk_window_get_title(shown.window()), "Exporting Highlights");
  EXPECT_FALSE(gtk_window_get_modal(shown.window())) << "mail can be read meanwhile";

  EXPECT_TRUE(shows("Asking the server…"));
  progress.set(TransferProgress{Step::asking, 200, 300});
  EXPECT_TRUE(shows("Looking up messages: 200 of 300"));

  click(buttonWithLabel(window(), "Stop"));
  EXPECT_EQ(stops, 1);
  gtk_window_close(shown.window());
  EXPECT_EQ(stops, 2);
  EXPECT_NE(shown.window(), nullptr) << "it goes with the work";
  progress.set(std::nullopt);
  EXPECT_EQ(shown.window(), nullptr);
}

} // namespace
} // namespace ondrel::ui
