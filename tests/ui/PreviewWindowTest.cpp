#include "ui/preview/PreviewWindow.h"

#include "ShellTest.h"
#include "platform/documents/DocumentDecoder.h"
#include "support/FakeDocumentDecoder.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace ondrel::ui {
namespace {

using namespace std::chrono_literals;

struct Types final : platform::ContentTypes {
  bool conforms(std::string_view type, platform::ContentKind kind) const override {
    using enum platform::ContentKind;
    return (kind == image && type.starts_with("image/")) || (kind == text && type.starts_with("text/")) ||
           (kind == pdf && type == "application/pdf") || (kind == audio && type.starts_with("audio/"));
  }
};

class PreviewWindowTest : public ShellTest {
 protected:
  void show(const std::string& name, const std::string& type, const std::string& content = "") {
    folder.write("file", content);
    preview.show({folder.file("file"), name, type}, nullptr, [this](int step) { steps.push_back(step); });
    if (topLevels.empty())
      root = showWidget(static_cast<GtkWidget*>(window(0)->content.handle));
  }
  bool until(const std::function<bool()>& holds) {
    return runUntil([&] {
      shell.loop.runUntilIdle();
      return holds();
    });
  }
  bool shows(const std::string& name) {
    return until([&] {
      auto* widget = find(root, name);
      return widget && gtk_widget_get_mapped(widget);
    });
  }
  bool press(guint key, GdkModifierType modifiers = GdkModifierType{}) {
    const auto controllers = glib::adopt(gtk_widget_observe_controllers(GTK_WIDGET(topLevels.back().get())));
    gboolean isHandled = FALSE;
    for (guint i = 0; i < g_list_model_get_n_items(controllers.get()) && !isHandled; ++i)
      if (const auto keys = glib::adopt(G_OBJECT(g_list_model_get_item(controllers.get(), i)));
          GTK_IS_EVENT_CONTROLLER_KEY(keys.get()))
        g_signal_emit_by_name(keys.get(), "key-pressed", key, 0U, modifiers, &isHandled);
    return isHandled != FALSE;
  }
  int width(const char* name) {
    int result = 0;
    gtk_widget_get_size_request(find(root, name), &result, nullptr);
    return result;
  }

  support::TemporaryFolder folder;
  support::FakeDocumentDecoder decoder;
  support::FakePages& pages = decoder.pages;
  support::FakeUriLauncher launcher;
  Types types;
  PreviewWindow preview{{shell.application, decoder, launcher, shell.defaults, types}};
  std::vector<int> steps;
  GtkWidget* root = nullptr;
};

TEST_F(PreviewWindowTest, ShowsEachKindInItsManner) {
  show("a\u202Egnp.exe", "image/png");
  EXPECT_TRUE(shows("preview-image"));
  EXPECT_EQ(window(0)->title, "agnp.exe") << "no signs that turn the name around";
  show("letter.pdf", "application/octet-stream");
  EXPECT_TRUE(shows("preview-pdf")) << "known by its name";
  EXPECT_TRUE(hasAccessibleLabel(find(root, "preview-canvas"), "letter.pdf"));

  show("page.html", "text/html",
       "<img src='http://127.0.0.1:1/'>gr\xFC\xDF"
       "e aus M\xFCnchen");
  ASSERT_TRUE(shows("preview-text"));
  char* text = nullptr;
  g_object_get(gtk_text_view_get_buffer(GTK_TEXT_VIEW(find(root, "preview-text"))), "text", &text, nullptr);
  const glib::CString owned(text);
  EXPECT_STREQ(text, "<img src='http://127.0.0.1:1/'>grüße aus München");
  EXPECT_EQ(find(root, "preview-cut"), nullptr);
  show("log.txt", "text/plain", std::string(3 << 20, 'x'));
  EXPECT_TRUE(shows("preview-cut"));

  show("a.zip", "application/zip", "1234");
  ASSERT_TRUE(shows("preview-card"));
  EXPECT_THAT(visibleTexts(find(root, "preview-card")), testing::Contains(testing::HasSubstr("4 bytes")));
  click(find(root, "preview-act"));
  launcher.fileAnswer = std::unexpected("Nothing can open it.");
  EXPECT_TRUE(until([&] { return !launcher.files.empty(); }));
  EXPECT_EQ(launcher.files.front(), "open with " + folder.file("file"));
  shell.loop.runUntilIdle();
  EXPECT_THAT(visibleTexts(root), testing::Contains("Nothing can open it."));
  show("binary.txt", "text/plain", std::string("a\0\1\0\2b", 6));
  EXPECT_TRUE(shows("preview-card"));

  pages.error = platform::DecodeError{platform::DecodeError::Kind::timedOut, "why"};
  show("a.png", "image/png");
  EXPECT_TRUE(
      until([&] { return std::ranges::count(visibleTexts(root), "It takes too long to be drawn.") > 0; }));

  preview.showError("The server said <no>.");
  EXPECT_TRUE(shows("preview-error"));
  EXPECT_FALSE(gtk_widget_get_sensitive(find(root, "preview-open"))) << "there is no file to open";
}

TEST_F(PreviewWindowTest, ShowsTheLastFileWhicheverComesFirst) {
  pages.opening = 2s;
  show("slow.png", "image/png");
  pages.opening = 0s;
  show("fast.pdf", "application/pdf");
  EXPECT_TRUE(shows("preview-pdf"));
  shell.loop.advance(5s);
  EXPECT_TRUE(shows("preview-pdf"));
  EXPECT_EQ(pages.open, 1);

  pages.opening = 2s;
  show("slow.png", "image/png");
  int closed = 0;
  const auto closing = preview.closed.subscribe([&] { ++closed; });
  preview.close();
  EXPECT_EQ(closed, 1);
  shell.loop.advance(5s);
  EXPECT_FALSE(preview.isOpen());
  EXPECT_EQ(pages.open, 0);

  pages.opening = 0s;
  preview.show({folder.file("file"), "again.pdf", "application/pdf"}, nullptr, nullptr);
  shell.loop.runUntilIdle();
  EXPECT_EQ(pages.open, 1);
}

TEST_F(PreviewWindowTest, IsReadableInANarrowWindowAndLargeLetters) {
  const PseudoLocale pseudo;
  for (const auto& [part, type] : {std::pair("preview-pdf", "application/pdf"),
                                   {"preview-card", "application/zip"},
                                   {"preview-cut", "text/plain"}}) {
    show("1", type, std::string(3 << 20, 'x'));
    gtk_window_set_default_size(topLevels.back().get(), 360, 600);
    EXPECT_TRUE(shows(part));
    expectReadable(root);
  }
}

TEST_F(PreviewWindowTest, GoesByTheKeys) {
  pages = {.kind = platform::DocumentKind::image, .width = 4000, .height = 300};
  show("wide.png", "image/png");
  ASSERT_TRUE(shows("preview-image") && until([&] { return width("preview-canvas") > 100; }));
  const auto fitted = width("preview-canvas");
  EXPECT_LE(fitted, 800);
  EXPECT_TRUE(press(GDK_KEY_0));
  EXPECT_EQ(width("preview-canvas"), 4000);
  EXPECT_TRUE(press(GDK_KEY_plus, GDK_SHIFT_MASK));
  EXPECT_EQ(width("preview-canvas"), 5000);
  EXPECT_TRUE(press(GDK_KEY_minus, GDK_CONTROL_MASK));
  EXPECT_EQ(width("preview-canvas"), 4000);
  EXPECT_TRUE(press(GDK_KEY_f));
  EXPECT_EQ(width("preview-canvas"), fitted);

  EXPECT_TRUE(press(GDK_KEY_Right));
  EXPECT_FALSE(gtk_widget_get_sensitive(find(root, "preview-next")));
  EXPECT_TRUE(steps.empty()) << "there is nothing beside it";
  preview.setNeighbours(true, true);
  EXPECT_TRUE(press(GDK_KEY_Right));
  EXPECT_TRUE(press(GDK_KEY_Left));
  click(find(root, "preview-next"));
  gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL); // the button of the next one is to the left
  EXPECT_TRUE(press(GDK_KEY_Left));
  gtk_widget_set_default_direction(GTK_TEXT_DIR_LTR);
  EXPECT_THAT(steps, testing::ElementsAre(1, -1, 1, 1));
  const auto presented = std::ranges::count(window(0)->calls, "key");
  preview.showLoading("next.png");
  show("next.png", "image/png");
  EXPECT_EQ(std::ranges::count(window(0)->calls, "key"), presented) << "the user may be elsewhere by now";

  show("a.zip", "application/zip");
  ASSERT_TRUE(shows("preview-card"));
  for (const auto& [key, modifiers] :
       {std::pair{GDK_KEY_space, GdkModifierType{}}, std::pair{GDK_KEY_Escape, GdkModifierType{}},
        std::pair{GDK_KEY_w, GDK_CONTROL_MASK}}) {
    if (!preview.isOpen()) {
      topLevels.clear();
      show("again.png", "image/png");
    }
    EXPECT_TRUE(press(static_cast<guint>(key), modifiers));
    shell.loop.runUntilIdle();
    EXPECT_FALSE(preview.isOpen());
  }
}

TEST_F(PreviewWindowTest, AsksForThePagesInSightOnly) {
  pages = {.count = 400, .rendering = 50ms, .words = "Hello"};
  show("long.pdf", "application/pdf");
  ASSERT_TRUE(shows("preview-pdf") && until([&] { return !pages.rendered.empty(); }));
  shell.loop.advance(10s);
  EXPECT_LE(pages.rendered.size(), 3U);
  auto* scroller = GTK_SCROLLED_WINDOW(find(root, "preview-pdf"));
  auto* vertical = gtk_scrolled_window_get_vadjustment(scroller);
  gtk_adjustment_set_value(vertical, gtk_adjustment_get_upper(vertical));
  shell.loop.advance(10s);
  EXPECT_EQ(std::ranges::max(pages.rendered), 399);
  EXPECT_LE(pages.rendered.size(), 6U) << "those in between were never in sight";

  EXPECT_TRUE(press(GDK_KEY_a, GDK_CONTROL_MASK));
  EXPECT_TRUE(press(GDK_KEY_c, GDK_CONTROL_MASK));
  shell.loop.runUntilIdle();
  GValue copied = G_VALUE_INIT;
  g_value_init(&copied, G_TYPE_STRING);
  auto* content = gdk_clipboard_get_content(gtk_widget_get_clipboard(root));
  ASSERT_TRUE(content && gdk_content_provider_get_value(content, &copied, nullptr));
  const std::string all = g_value_get_string(&copied);
  EXPECT_TRUE(all.starts_with("Hello\nHello\n") && all.size() == 400 * 6 - 1) << "of all pages, not of one";
  g_value_unset(&copied);
}

TEST_F(PreviewWindowTest, PlaysWhatMovesInItsTime) {
  g_object_set(gtk_settings_get_default(), "gtk-enable-animations", TRUE, nullptr);
  pages = {.kind = platform::DocumentKind::image, .count = 3, .isAnimation = true, .rendering = 30ms};
  show("a.gif", "image/gif");
  ASSERT_TRUE(shows("preview-image") && until([&] { return width("preview-canvas") > 0; }));
  const auto begun = pages.rendered.size();
  shell.loop.advance(1s);
  g_object_set(gtk_settings_get_default(), "gtk-enable-animations", FALSE, nullptr);
  EXPECT_NEAR(static_cast<double>(pages.rendered.size() - begun), 10, 1);
  for (std::size_t i = 0; i < pages.rendered.size(); ++i)
    EXPECT_EQ(pages.rendered[i], static_cast<int>(i % 3));
}

} // namespace
} // namespace ondrel::ui
