#include "ui/attachments/FilesWindow.h"

#include "ShellTest.h"
#include "support/FakeAttachments.h"
#include "support/FakeTextFormatting.h"
#include "support/TemporaryFolder.h"
#include "ui/attachments/AttachmentDrag.h"

#include <adwaita.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

namespace ondrel::ui {
namespace {

using namespace std::chrono_literals;
using File = support::FakeAttachments::File;

struct FakePanel final : PreviewPanel {
  void show(const File& file, std::function<void(int)> step) override {
    calls.push_back("show " + file.name + " of " + file.path);
    neighbour = std::move(step);
    open = true;
  }
  void showLoading(const std::string& name) override { calls.push_back("loading " + name); }
  void showError(const std::string& text) override { calls.push_back("error " + text); }
  void setNeighbours(Neighbours neighbours) override { beside = neighbours; }
  bool isOpen() const override { return open; }
  void close() override {
    open = false;
    closed.emit();
  }

  std::vector<std::string> calls;
  std::function<void(int)> neighbour;
  Neighbours beside;
  bool open = false;
};

class FilesWindowTest : public ShellTest {
 protected:
  void TearDown() override {
    files.reset();
    ShellTest::TearDown();
  }
  // Of two pages of 30 emails, the second of which has one.
  void addMail(int first = 0) {
    std::vector<std::vector<File>> page(30, {{.name = "a.png"}});
    page[1] = {{.name = "Plan.pdf", .type = "application/pdf", .subject = "Garden", .size = 2000000}};
    service.addPage(first, page, first + 31);
    service.addPage(first + 30, {{{.name = "last.zip", .type = "application/zip"}}}, first + 31);
  }
  void open() {
    files->show();
    root = showWidget(static_cast<GtkWidget*>(shell.application.all.back()->content.handle), 360);
  }
  void advance(async::Duration time) {
    shell.loop.advance(time);
    // What the list does comes with its frames.
    for (int i = 0; root && i < 5; ++i) {
      auto* clock = gtk_widget_get_frame_clock(root);
      const auto before = gdk_frame_clock_get_frame_counter(clock);
      gtk_widget_queue_draw(root);
      EXPECT_TRUE(runUntil([&] { return gdk_frame_clock_get_frame_counter(clock) > before; }));
      shell.settle();
    }
  }
  GtkWidget* list() { return find(root, "attachments"); }
  // Those that have something to show, from the top.
  std::vector<GtkWidget*> rows() {
    std::vector<std::pair<float, GtkWidget*>> found;
    for (auto* child = gtk_widget_get_first_child(list()); child;
         child = gtk_widget_get_next_sibling(child)) {
      graphene_rect_t bounds;
      if (ADW_IS_BIN(child) && gtk_widget_get_child_visible(child) &&
          gtk_widget_compute_bounds(child, list(), &bounds))
        found.emplace_back(bounds.origin.y, child);
    }
    std::ranges::sort(found);
    std::vector<GtkWidget*> result;
    for (const auto& [y, widget] : found)
      result.push_back(widget);
    return result;
  }
  std::vector<std::string> names() {
    std::vector<std::string> result;
    for (auto* row : rows())
      result.push_back(visibleTexts(row).front());
    return result;
  }
  // As the toolkit tells it to the widget with the keyboard and to those around it.
  bool press(GtkWidget* widget, guint key, GdkModifierType held = GdkModifierType(0)) {
    const auto controllers = glib::adopt(gtk_widget_observe_controllers(widget));
    for (guint i = 0; i < g_list_model_get_n_items(controllers.get()); ++i) {
      const auto controller = glib::adopt(g_list_model_get_item(controllers.get(), i));
      gboolean taken = FALSE;
      if (GTK_IS_EVENT_CONTROLLER_KEY(controller.get()))
        g_signal_emit_by_name(controller.get(), "key-pressed", key, 0U, held, &taken);
      if (taken)
        return true;
    }
    return false;
  }
  // Of the first row, whose server refuses.
  void openAndFailAPreview() {
    addMail();
    open();
    advance(2s);
    service.http.openFailure = support::FakeHttpClient::failure("refused");
    press(list(), GDK_KEY_Home);
    press(list(), GDK_KEY_space);
    advance(5s);
  }
  // Hands out the next file.
  void serve() {
    service.http.streamLength = 5;
    ASSERT_TRUE(shell.loop.runUntil([&] { return service.http.feeds.size() > served; }, 1min));
    service.http.feeds[served]->give(std::string("bytes"));
    service.http.feeds[served++]->end();
    advance(0s);
  }
  static std::size_t spinnersIn(GtkWidget* widget) {
    std::size_t count = GTK_IS_SPINNER(widget) && gtk_spinner_get_spinning(GTK_SPINNER(widget)) ? 1 : 0;
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
      count += spinnersIn(child);
    return count;
  }
  void search(const std::string& text) {
    gtk_editable_set_text(GTK_EDITABLE(find(root, "attachments-search")), text.c_str());
    advance(0s);
    advance(0s);
  }
  bool says(const std::string& text) { return std::ranges::count(visibleTexts(root), text) > 0; }
  std::string part() { return gtk_stack_get_visible_child_name(GTK_STACK(find(root, "files-content"))); }

  support::FakeAttachments service;
  support::FakeTextFormatting formatting;
  FakePanel panel;
  std::optional<FilesWindow> files = std::optional<FilesWindow>(
      std::in_place,
      FilesWindow::Services{.application = shell.application,
                            .defaults = shell.defaults,
                            .formatting = formatting,
                            .preview = panel,
                            .launcher = shell.uriLauncher,
                            .makeViewModel = [this](const auto&) { return service.makeModel(); }});
  GtkWidget* root = nullptr;
  std::size_t served = 0; // files
};

TEST_F(FilesWindowTest, ListsSearchesAndFollowsTheEnd) {
  addMail();
  service.client.delay = 1s;
  open();
  EXPECT_EQ(shell.application.all.back()->title, "Attached Files");
  EXPECT_EQ(part(), "foot") << "nothing is known yet: no word of emptiness";
  advance(10s);
  const auto first = names();
  ASSERT_GT(first.size(), 5U);
  EXPECT_LT(first.size(), 20U) << "filled are those in sight";
  EXPECT_EQ(first[1], "Plan.pdf");
  EXPECT_TRUE(says("Since <2025-06-01>") && says("<2025-06-01>") && says("2.0 MB"));
  EXPECT_TRUE(hasAccessibleLabel(rows()[1], "Plan.pdf, Ann · Garden, <2025-06-01>, 2.0\u00A0MB"));
  EXPECT_EQ(service.client.sent.size(), 2U) << "the mailboxes and one page: the end is out of sight";

  search(" GARDEN ");
  EXPECT_EQ(names(), std::vector<std::string>{"Plan.pdf"});
  search("nowhere");
  EXPECT_TRUE(says("No matches in the loaded attachments yet.") && says("Load More")) << "there is more";
  EXPECT_EQ(part(), "foot");
  EXPECT_TRUE(press(find(root, "files"), GDK_KEY_Escape));
  advance(0s);
  auto* scroll = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list()));
  EXPECT_EQ(names().at(1), "Plan.pdf");
  EXPECT_EQ(gtk_adjustment_get_value(scroll), 0);
  gtk_adjustment_set_value(scroll, gtk_adjustment_get_upper(scroll));
  advance(10s);
  EXPECT_FALSE(says("Since <2025-06-01>")) << "all is loaded";
  const auto place = gtk_adjustment_get_value(scroll);
  EXPECT_EQ(names().back(), "last.zip");
  addMail();
  EXPECT_TRUE(press(find(root, "files"), GDK_KEY_F5));
  for (int i = 0; i < 8; ++i)
    advance(1s);
  EXPECT_NEAR(gtk_adjustment_get_value(scroll), place, 1) << "the place is where it was";
  EXPECT_EQ(names().back(), "last.zip");
  search("nowhere");
  EXPECT_TRUE(part() == "empty" && says("No Matches") &&
              says("No files match the current search or filter."));
  EXPECT_TRUE(press(find(root, "files"), GDK_KEY_Escape) && press(find(root, "files"), GDK_KEY_Escape));
  EXPECT_TRUE(shell.application.all.empty() || !files->native()) << "the second one closes";
}

TEST_F(FilesWindowTest, IsReadableInANarrowWindowAndLargeLetters) {
  const PseudoLocale pseudo;
  addMail();
  open();
  advance(2s);
  expectReadable(root);
  search("nowhere");
  expectReadable(root);
}

TEST_F(FilesWindowTest, SaysWhatFailsAndTriesAgain) {
  service.client.fail("Email/query", {jmap::JMAPError::Kind::transport, "refused"});
  addMail(1);
  open();
  advance(2s);
  EXPECT_TRUE(part() == "empty" && says("No Attachments") &&
              says("Attachments from your mail will appear here."));
  EXPECT_TRUE(says(jmap::JMAPError{jmap::JMAPError::Kind::transport, "refused"}.description()));
  click(buttonWithLabel(GTK_WIDGET(gtk_stack_get_visible_child(GTK_STACK(find(root, "files-content")))),
                        "Load More"));
  advance(2s);
  EXPECT_EQ(part(), "list");
  EXPECT_GT(names().size(), 5U);
}

TEST_F(FilesWindowTest, PreviewsWhatWasAskedForLast) {
  addMail();
  open();
  advance(2s);
  gtk_widget_grab_focus(rows()[0]);
  EXPECT_TRUE(press(list(), GDK_KEY_space)) << "not the toolkit's own meaning";
  EXPECT_TRUE(panel.calls.empty()) << "none is selected";
  press(list(), GDK_KEY_Home);
  press(list(), GDK_KEY_space);
  advance(1s);
  press(list(), GDK_KEY_Down);
  press(list(), GDK_KEY_space);
  advance(1s);
  EXPECT_EQ(spinnersIn(list()), 2U) << "in place of their menus";
  serve();
  EXPECT_TRUE(panel.calls.empty());
  serve();
  ASSERT_EQ(panel.calls.size(), 1U) << "the first came too, and too late";
  EXPECT_TRUE(panel.calls[0].starts_with("show Plan.pdf of "));
  EXPECT_TRUE(panel.beside.previous && panel.beside.next);
  panel.neighbour(1);
  EXPECT_TRUE(gtk_widget_get_state_flags(rows()[2]) & GTK_STATE_FLAG_SELECTED);
  EXPECT_EQ(panel.calls.back(), "loading a.png");
  serve();
  EXPECT_TRUE(panel.calls.back().starts_with("show a.png"));
  service.http.openFailure = support::FakeHttpClient::failure("refused");
  panel.neighbour(1);
  advance(5s);
  EXPECT_TRUE(panel.calls.back().starts_with("error ")) << panel.calls.back();
  panel.calls.clear();
  press(list(), GDK_KEY_Home);
  advance(0s);
  EXPECT_TRUE(!panel.beside.previous && panel.beside.next) << "it goes with the selected row";
  search("zip");
  EXPECT_FALSE(panel.beside.next);
  press(list(), GDK_KEY_space);
  advance(5s);
  EXPECT_TRUE(panel.calls.empty()) << "the selected row is filtered out";
}

TEST_F(FilesWindowTest, PreviewsNothingThatNobodyWaitsFor) {
  addMail();
  open();
  advance(2s);
  press(list(), GDK_KEY_Home);
  press(list(), GDK_KEY_space);
  serve();
  panel.neighbour(1);
  ASSERT_TRUE(shell.loop.runUntil([&] { return service.http.feeds.size() > served; }, 1min));
  panel.close();
  serve();
  EXPECT_EQ(panel.calls.back(), "loading Plan.pdf") << "it was closed before the file came";
}

TEST_F(FilesWindowTest, KnowsAnOldErrorFromTheReasonOfThePreview) {
  openAndFailAPreview();
  service.http.openFailure.reset();
  service.client.delay = 1s;
  press(list(), GDK_KEY_Return);
  press(list(), GDK_KEY_space); // while the email is looked for
  serve();
  ASSERT_EQ(panel.calls.size(), 1U);
  EXPECT_TRUE(panel.calls[0].starts_with("show a.png"));
}

TEST_F(FilesWindowTest, FollowsTheEndPastPagesWithoutARow) {
  std::vector<std::vector<File>> few(30);
  const std::vector<std::vector<File>> none(30);
  few[0] = {{.name = "first.png"}};
  service.addPage(0, few, 91);
  service.addPage(30, none, 91);
  service.addPage(60, none, 91);
  service.addPage(90, {{{.name = "last.zip", .type = "application/zip"}}}, 91);
  open();
  advance(2s);
  advance(2s);
  EXPECT_EQ(names(), (std::vector<std::string>{"first.png", "last.zip"}));
}

TEST_F(FilesWindowTest, FollowsTheEndAfterAPreviewThatFailed) {
  openAndFailAPreview();
  auto* scroll = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list()));
  gtk_adjustment_set_value(scroll, gtk_adjustment_get_upper(scroll));
  advance(2s);
  EXPECT_EQ(names().back(), "last.zip");
}

TEST_F(FilesWindowTest, GivesTheKeyboardBackAfterARefreshUnlessItIsElsewhere) {
  addMail();
  open();
  advance(2s);
  service.client.delay = 1s;
  for (const bool isElsewhere : {false, true}) {
    press(list(), GDK_KEY_Home);
    addMail();
    press(find(root, "files"), GDK_KEY_F5);
    advance(0s);
    advance(500ms);
    EXPECT_TRUE(rows().empty());
    if (isElsewhere)
      gtk_widget_grab_focus(find(root, "attachments-search"));
    advance(5s);
    auto* focus = gtk_root_get_focus(gtk_widget_get_root(root));
    EXPECT_EQ(focus && gtk_widget_get_parent(focus) == list(), !isElsewhere);
  }
}

TEST(DraggedCopiesTest, HaveTheirNamesUntilTheyGo) {
  const support::TemporaryFolder folder;
  folder.write("preview-G1", "bytes");
  {
    DraggedCopies copies;
    const auto path = copies.add(folder.file("preview-G1"), "a b.png");
    EXPECT_TRUE(path.ends_with("/a b.png"));
    EXPECT_EQ(folder.content(path.substr(folder.path().size() + 1)), "bytes");
    EXPECT_EQ(copies.add(folder.file("none"), "b"), folder.file("none"));
  }
  EXPECT_EQ(folder.names(), std::set<std::string>{"preview-G1"});
}

TEST_F(FilesWindowTest, DropsWaitForTheFile) {
  const auto model = service.makeModel();
  auto view = glib::share(gtk_label_new(nullptr));
  AttachmentDrag drag(view.get(), *model, std::make_shared<DraggedCopies>(),
                      [](double, double) { return nullptr; });
  const jmap::AttachmentInfo info{"M1-G1", "M1", "G1", "a b.png", "image/png", 5, "S", "F", {}};
  const auto drop = [&](const char*& outcome) {
    const auto provider = drag.provider(info);
    auto stream = glib::adopt(g_memory_output_stream_new_resizable());
    gdk_content_provider_write_mime_type_async(
        provider.get(), "text/uri-list", stream.get(), G_PRIORITY_DEFAULT, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
          const bool done =
              gdk_content_provider_write_mime_type_finish(GDK_CONTENT_PROVIDER(source), result, nullptr);
          *static_cast<const char**>(data) = done ? "written" : "failed";
        },
        &outcome);
    return stream;
  };
  const char* first = "";
  const auto stream = drop(first);
  EXPECT_STREQ(first, "");
  serve();
  EXPECT_TRUE(runUntil([&] { return *first != 0; }));
  EXPECT_STREQ(first, "written");
  const std::string text(
      static_cast<const char*>(g_memory_output_stream_get_data(G_MEMORY_OUTPUT_STREAM(stream.get()))),
      g_memory_output_stream_get_data_size(G_MEMORY_OUTPUT_STREAM(stream.get())));
  EXPECT_TRUE(text.starts_with("file:///") && text.ends_with(".png\r\n")) << text;
  service.http.openFailure = support::FakeHttpClient::failure("refused");
  service.files.files.clear();
  const char* second = "";
  const auto other = drop(second);
  advance(5s);
  EXPECT_TRUE(runUntil([&] { return *second != 0; }));
  EXPECT_STREQ(second, "failed");
  EXPECT_TRUE(*model->errorMessage);
}

// However the rows come, go and move, each is in its place, and the keyboard is where the user sees it.
TEST_F(FilesWindowTest, KeepsItsRowsInTheirPlaces) {
  std::vector<File> many(1500);
  for (std::size_t i = 0; i < many.size(); ++i)
    many[i].name = (i % 2 == 0 ? "even " : "odd ") + std::to_string(i);
  service.addPage(0, {many}, 1);
  open();
  advance(1s);
  auto* scroll = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list()));
  const auto height = gtk_adjustment_get_upper(scroll) / 1500;
  const auto isFocused = [&](const std::string& name) {
    auto* focus = gtk_root_get_focus(gtk_widget_get_root(root));
    const auto shown = rows();
    const auto found = std::ranges::find(shown, focus);
    return found != shown.end() && names()[static_cast<std::size_t>(found - shown.begin())] == name;
  };
  gtk_widget_grab_focus(rows()[0]);
  press(list(), GDK_KEY_End);
  advance(0s);
  EXPECT_EQ(names().back(), "odd 1499");
  EXPECT_TRUE(isFocused("odd 1499"));
  gtk_adjustment_set_value(scroll, 700 * height);
  advance(1s);
  advance(1s); // at rest, after the last frame that brought rows
  const auto shown = names();
  ASSERT_GT(shown.size(), 6U);
  // Two are ready above the edge, in one place.
  EXPECT_EQ(std::min(shown[0], shown[1]), "even 698");
  EXPECT_EQ(std::max(shown[0], shown[1]), "odd 699");
  EXPECT_EQ(std::ranges::count(shown, "odd 1499"), 1) << "it has the keyboard";
  press(list(), GDK_KEY_Up);
  advance(0s);
  EXPECT_TRUE(isFocused("even 1498")) << "and leads back to it";
  for (const auto& [text, first] : std::map<std::string, std::string>{
           {"odd", "odd 1"}, {"even", "even 0"}, {"odd 7", "odd 7"}, {"1498", "even 1498"}}) {
    search(text);
    EXPECT_EQ(names().at(0), first);
    search("nothing");
  }
  search("");
  EXPECT_EQ(std::ranges::count(names(), "even 1498"), 1) << "the selected row is where it was";
}

} // namespace
} // namespace ondrel::ui
