#include "ShellTest.h"

#include "app/PersistedSession.h"
#include "integrations/AnnouncementService.h"
#include "platform/Download.h"
#include "platform/NetworkMonitor.h"
#include "ui/page/AnnouncementBanner.h"
#include "web/page/DownloadItem.h"

namespace ondrel::ui {
namespace {

using Texts = std::vector<std::string>;
using Kind = web::PageProblem::Kind;
using namespace std::chrono_literals;

class ContentViewTest : public ShellTest {
 protected:
  std::shared_ptr<web::DownloadItem> addDownload(const std::string& name) {
    auto item = std::make_shared<web::DownloadItem>(name, "/downloads/" + name, download);
    auto items = *model(0)->downloads;
    items.push_back(item);
    model(0)->downloads.set(items);
    return item;
  }

  std::shared_ptr<support::FakeDownload> download = std::make_shared<support::FakeDownload>();
};

TEST_F(ContentViewTest, ARestoredTabIsAnEmptyBoxUntilItIsShown) {
  app::PersistedSession session;
  session.windows.resize(1);
  for (const std::string name : {"First", "Second"})
    session.windows[0].tabs.push_back({"https://app.example.com/" + name, name, std::nullopt, 1.0, true});
  shell.files.files["/data/session.json"] = session.encoded();
  start();
  ASSERT_EQ(shell.application.all.size(), 2U);
  EXPECT_EQ(window(1)->title, "Second");
  EXPECT_EQ(gtk_widget_get_first_child(content(1)), nullptr) << "nobody has looked at it";
  EXPECT_TRUE(pages.empty());

  show(1);
  ASSERT_EQ(pages.size(), 1U) << "the web view is made when the tab is seen, and only that of this tab";
  EXPECT_EQ(shell.webView(model(1))->loads, Texts{"https://app.example.com/Second"});
  EXPECT_TRUE(gtk_widget_is_ancestor(pages[0].get(), content(1)));
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), pages[0].get()) << "the page has the keyboard";

  gtk_window_set_child(topLevels[0].get(), nullptr);
  show(1);
  EXPECT_EQ(pages.size(), 1U) << "coming back makes no second one";
  EXPECT_EQ(gtk_window_get_focus(topLevels[1].get()), pages[0].get());
}

TEST_F(ContentViewTest, TellsTheWindowTitleAndLoadAndZoomsANewPage) {
  start();
  model(0)->initialPageZoom.set(1.1);
  model(0)->title.set("Re:\n\xE2\x80\xAEtxt.exe");
  EXPECT_EQ(window(0)->title, "Re: txt.exe");
  model(0)->isLoading.set(true);
  EXPECT_TRUE(window(0)->busy);
  EXPECT_EQ(model(0)->window.lock(), window(0));

  shell.manager->newTab();
  model(1)->initialPageZoom.set(0.9);
  model(1)->applyZoom();
  EXPECT_DOUBLE_EQ(shell.webView(model(1))->zoom, 0.9);
}

TEST_F(ContentViewTest, ANoticeShowsOverThePageWithWhatCanBeDone) {
  start();
  int done = 0;
  model(0)->tell({.text = "One", .button = "Copy", .act = [&] { ++done; }});
  auto* root = show(0);
  EXPECT_TRUE(runUntil([&] { return buttonWithLabel(root, "Copy") != nullptr; })) << "told of before";
  model(0)->noticed.emit({.text = "Two", .button = "Open", .act = [&] { ++done; }});
  EXPECT_TRUE(runUntil([&] { return buttonWithLabel(root, "Open") != nullptr; }));
  click(buttonWithLabel(root, "Open"));
  EXPECT_EQ(done, 1);
}

TEST_F(ContentViewTest, TheBarOfTheHoveredLinkNeverCutsWhereItLeads) {
  start();
  auto* root = showWidget(content(0), 360);
  auto* bar = find(root, "mouse-over");
  EXPECT_FALSE(gtk_widget_get_visible(bar));
  const auto show = [&](const std::string& address) {
    model(0)->mouseOverString.set(address);
    EXPECT_TRUE(runUntil([&] { return gtk_widget_get_height(bar) > 0; }));
    return visibleTexts(root);
  };
  auto texts =
      show("https://user.example@bank.example:8443/\xE2\x80\xAEmoc/" + std::string(1'000'000, 'x') + "/end");
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0], "https://bank.example:8443") << "a name before it is no host";
  EXPECT_TRUE(texts[1].starts_with("/moc/xxx") && texts[1].ends_with("xxx/end") && texts[1].size() < 1100);
  EXPECT_FALSE(gtk_widget_get_can_target(bar)) << "the pointer stays with the page";
  EXPECT_EQ(gtk_widget_get_height(pages[0].get()), 600) << "the page keeps its height";
  EXPECT_EQ(gtk_widget_get_width(bar), 360) << "as wide as the page, however long the text is";
  const int line = gtk_widget_get_height(bar);
  EXPECT_EQ(show("mailto:a@bank.example?subject=x")[0], "mailto:a@bank.example");
  EXPECT_EQ(show("a\n<b>b</b>")[0], "a <b>b</b>") << "no address that leads somewhere";
  show("https://" + std::string(60, 'a') + "." + std::string(60, 'b') + ".example/");
  EXPECT_TRUE(runUntil([&] { return gtk_widget_get_height(bar) > 2 * line; }))
      << "a long host has more lines";

  const std::function<void()> leaves[] = {[this] { shell.webView(model(0))->commit(); },
                                          [this] { model(0)->dialogs.alert("", "!", {[](bool) {}, false}); },
                                          [&] {
                                            showWidget(gtk_label_new("Another window"));
                                            EXPECT_TRUE(
                                                runUntil([&] { return !gtk_widget_get_visible(bar); }));
                                          }};
  for (const auto& leave : leaves) {
    show("https://bank.example/");
    leave();
    EXPECT_FALSE(gtk_widget_get_visible(bar));
  }
  const auto controllers = glib::adopt(gtk_widget_observe_controllers(gtk_widget_get_parent(bar)));
  const auto moveTo = [&](double x) {
    for (guint i = 0; i < g_list_model_get_n_items(controllers.get()); ++i)
      if (const auto each = glib::adopt(g_list_model_get_item(controllers.get(), i));
          GTK_IS_EVENT_CONTROLLER_MOTION(each.get()))
        g_signal_emit_by_name(each.get(), "motion", x, 0.0);
    return gtk_widget_get_visible(bar) != FALSE;
  };
  EXPECT_FALSE(moveTo(0)) << "the pointer rests where it was";
  EXPECT_TRUE(moveTo(1)) << "the page, which saw nothing of it, will not name the link again";
}

TEST_F(ContentViewTest, TheFindBarSaysWhatWasFoundAndGivesTheKeyboardBack) {
  start();
  auto* root = showWidget(content(0), 360);
  auto& search = model(0)->search;
  auto& finder = shell.webView(model(0))->pageFinder;
  search.ask();
  auto* bar = find(root, "find-bar");
  auto* entry = find(bar, "find-entry");
  EXPECT_TRUE(gtk_widget_is_ancestor(gtk_window_get_focus(topLevels[0].get()), entry));
  const auto count = [&](unsigned matches, const char* text) {
    finder.matches = matches;
    gtk_editable_set_text(GTK_EDITABLE(entry), text);
    shell.settle();
    return std::string(gtk_label_get_text(GTK_LABEL(find(bar, "find-count"))));
  };
  EXPECT_EQ(count(17, "fo"), "17 matches");
  EXPECT_TRUE(gtk_widget_get_sensitive(find(bar, "find-next")));
  EXPECT_EQ(count(1, "foo"), "1 match");
  EXPECT_EQ(count(1001, "o"), "Over 1000 matches");
  EXPECT_EQ(count(0, "fox"), "No matches");
  EXPECT_TRUE(gtk_widget_has_css_class(entry, "error"));
  EXPECT_FALSE(gtk_widget_get_sensitive(find(bar, "find-next")));
  EXPECT_EQ(count(2, ""), "");
  count(2, "kept");
  gtk_search_bar_set_search_mode(GTK_SEARCH_BAR(bar), FALSE);
  EXPECT_FALSE(search.state->isOpen);
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), pages[0].get());
  finder.calls.clear();
  search.ask();
  g_signal_emit_by_name(entry, "activate");
  EXPECT_EQ(finder.calls, Texts{"find kept"});
}

TEST_F(ContentViewTest, LoadsAndZoomShowOverThePage) {
  start();
  auto* root = show(0);
  auto* bar = find(root, "load-progress");
  const auto view = shell.webView(model(0));
  view->progress = 0.5;
  view->goTo("https://app.example.com/slow");
  EXPECT_TRUE(gtk_widget_get_visible(bar));
  EXPECT_EQ(gtk_progress_bar_get_fraction(GTK_PROGRESS_BAR(bar)), 0.5);
  view->finish();
  shell.loop.advance(300ms);
  EXPECT_FALSE(gtk_widget_get_visible(bar));
  model(0)->zoomIn();
  EXPECT_EQ(visibleTexts(root), Texts{"105%"});
  shell.loop.advance(1500ms);
  EXPECT_EQ(visibleTexts(root), Texts{});
}

TEST_F(ContentViewTest, TellsWhatKeepsThePageFromShowing) {
  start();
  auto* root = show(0);
  const auto& view = shell.webView(model(0));
  model(0)->pageProblem.set({Kind::loadFailed, "The name <could> not\nbe resolved"});
  EXPECT_EQ(visibleTexts(root), (Texts{"Can't reach the mail service", "The name <could> not be resolved",
                                       "Trying again…", "Try Now"}));
  const auto before = view->loads.size();
  click(buttonWithLabel(root, "Try Now"));
  EXPECT_EQ(view->loads.size(), before + 1);
  EXPECT_EQ(visibleTexts(root), Texts{}) << "asking again is enough for the bar to go";

  model(0)->pageProblem.set({Kind::navigationFailed, "no route", "https://x.example/"});
  EXPECT_TRUE(gtk_widget_get_mapped(pages[0].get())) << "the page before stays";
  EXPECT_EQ(visibleTexts(root), (Texts{"“https://x.example/” could not be loaded", "no route", "Try Again"}));
  click(buttonWithLabel(root, "Try Again"));
  EXPECT_EQ(view->loads.back(), "https://x.example/");
  model(0)->pageProblem.set({Kind::noApplication, "", "tel:1"});
  EXPECT_EQ(visibleTexts(root), Texts{"No application opens “tel:1”"});
  model(0)->pageProblem.set({});

  model(0)->pageProblem.set({Kind::processTerminated, ""});
  EXPECT_FALSE(gtk_widget_get_mapped(pages[0].get()));
  EXPECT_EQ(visibleTexts(root).at(0), "This Page Stopped Working");
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), buttonWithLabel(root, "Reload")) << "Enter is enough";
  click(buttonWithLabel(root, "Reload"));
  EXPECT_EQ(view->loads.size(), before + 3);
  EXPECT_TRUE(gtk_widget_get_mapped(pages[0].get())) << "the page is back";
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), pages[0].get());
}

TEST_F(ContentViewTest, ADialogOfThePageCoversThePageAlone) {
  start();
  auto* root = show(0);
  auto* page = pages[0].get();
  std::vector<std::string> answers;
  const auto ask = [&] {
    model(0)->dialogs.prompt(
        "https://app.example.com/", "Name?\n<b>now</b>", "Jane",
        {[&](const auto& text) { answers.push_back(text.value_or("none")); }, std::nullopt});
  };
  ask();
  EXPECT_EQ(visibleTexts(root), (Texts{"app.example.com says", "Name?\n<b>now</b>", "Cancel", "OK"}));
  EXPECT_FALSE(gtk_widget_grab_focus(page)) << "the page is out of reach";
  auto* focus = gtk_window_get_focus(topLevels[0].get());
  ASSERT_TRUE(GTK_IS_TEXT(focus)) << "the field has the keyboard";
  gtk_editable_set_text(GTK_EDITABLE(focus), "Joe");
  g_signal_emit_by_name(focus, "activate");
  EXPECT_EQ(visibleTexts(root), Texts{});
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), page) << "and has it back";

  ask();
  gtk_check_button_set_active(GTK_CHECK_BUTTON(find(root, "silence")), TRUE);
  click(buttonWithLabel(root, "Cancel"));
  ask();
  EXPECT_EQ(answers, (Texts{"Joe", "none", "none"}));
  EXPECT_EQ(find(root, "page-dialog"), nullptr) << "silenced";

  model(0)->dialogs.leave({[&](bool leave) { answers.push_back(leave ? "left" : "stayed"); }, false});
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), buttonWithLabel(root, "Stay"));
  model(0)->dialogs.dismiss();
  EXPECT_EQ(find(root, "page-dialog"), nullptr);
  EXPECT_EQ(answers.back(), "stayed");
}

TEST_F(ContentViewTest, AHungPageCanBeWaitedForOrLoadedAgain) {
  start();
  auto* root = show(0);
  const auto view = shell.webView(model(0));
  view->setHangs(true);
  shell.loop.advance(8s);
  EXPECT_EQ(visibleTexts(root).at(0), "This page doesn't answer");
  EXPECT_TRUE(gtk_widget_get_mapped(pages[0].get())) << "the page still shows";
  click(buttonWithLabel(root, "Wait"));
  EXPECT_EQ(visibleTexts(root), Texts{});
  shell.loop.advance(8s);
  click(buttonWithLabel(root, "Reload"));
  EXPECT_EQ(view->terminations, 1);
  EXPECT_EQ(visibleTexts(root), Texts{});
}

TEST_F(ContentViewTest, ListsDownloads) {
  start();
  auto* root = show(0);
  download->current = {0.25, 1'500'000, 6'000'000};
  const auto first = addDownload("invoice\xE2\x80\xAE"
                                 "fdp.exe");
  const auto second = addDownload("photo.jpg");
  download->progressed.emit();
  const auto size = [](guint64 bytes) { return std::string(glib::CString(g_format_size(bytes)).get()); };
  EXPECT_EQ(visibleTexts(root), (Texts{"invoicefdp.exe", size(1'500'000) + " / " + size(6'000'000),
                                       "photo.jpg", size(1'500'000) + " / " + size(6'000'000)}));
  EXPECT_TRUE(first->filename.contains("\xE2\x80\xAE")) << "only what is shown is cleaned";

  first->markFinished();
  second->markFailed("disk full");
  EXPECT_EQ(visibleTexts(root).at(1), size(6'000'000) + " / " + size(6'000'000)) << "seen full first";
  shell.loop.advance(1s);
  EXPECT_EQ(visibleTexts(root),
            (Texts{"invoicefdp.exe", "Done", "Open", "photo.jpg", "disk full", "Failed"}));

  auto* open = buttonWithLabel(root, "Open");
  click(open);
  click(buttonWithLabel(root, "Show in Folder: invoicefdp.exe"));
  shell.uriLauncher.fileAnswer = std::unexpected("No application opens it.");
  click(open);
  shell.settle();
  EXPECT_EQ(shell.uriLauncher.files.size(), 3U);
  EXPECT_EQ(visibleTexts(root).at(1), "No application opens it.");
  gtk_widget_grab_focus(open);
  EXPECT_TRUE(*first->isHeld && *second->isHeld) << "rows that go move the others";
  gtk_widget_grab_focus(pages[0].get());
  EXPECT_FALSE(*first->isHeld);

  model(0)->downloads.set({second});
  EXPECT_EQ(visibleTexts(root), (Texts{"photo.jpg", "disk full", "Failed"}));
  model(0)->downloads.set({});
  EXPECT_FALSE(gtk_widget_get_visible(find(root, "downloads"))) << "no empty stripe stays";
  download->current = {0, 2'000, -1};
  addDownload("stream.bin");
  download->progressed.emit();
  EXPECT_EQ(visibleTexts(root), (Texts{"stream.bin", size(2'000)})) << "of unknown length";
  click(buttonWithLabel(root, "Cancel Download: stream.bin"));
  EXPECT_EQ(visibleTexts(root), (Texts{"stream.bin", "Cancelled"}));
}

TEST_F(ContentViewTest, WhatIsAroundAPageIsReadableInANarrowWindowAndLargeLetters) {
  const PseudoLocale pseudo;
  start();
  auto* root = showWidget(content(0), 360);
  auto& tab = *model(0);
  download->current = {0.25, 1'500'000, 6'000'000};
  const std::function<void()> cases[] = {
      [&] { tab.pageProblem.set({Kind::loadFailed, "9"}); },
      [&] { tab.pageProblem.set({Kind::navigationFailed, "9", "9"}); },
      [&] { tab.pageProblem.set({Kind::noApplication, "", "tel:1"}); },
      [&] { tab.pageProblem.set({Kind::unresponsive, ""}); },
      [&] { tab.pageProblem.set({Kind::processTerminated, ""}); },
      [&] { tab.search.ask(); },
      [&] {
        shell.webView(model(0))->pageFinder.matches = 1001;
        gtk_editable_set_text(GTK_EDITABLE(find(root, "find-entry")), "o");
      },
      [&] { addDownload("1")->markFinished(); },
      [&] { addDownload("2")->markFailed("3"), addDownload("4"), download->progressed.emit(); },
      [&] { tab.noticed.emit({.text = base::tr("Select text in a message first."), .button = "5"}); },
      [&] { tab.dialogs.leave({[](bool) {}, false}); },
  };
  for (const auto& each : cases) {
    tab.pageProblem.set({});
    each();
    shell.loop.advance(1s);
    SCOPED_TRACE(&each - cases);
    expectReadable(root);
  }
}

TEST_F(ContentViewTest, ClosingTheTabLetsGoOfThePage) {
  start();
  show(0);
  const std::weak_ptr<web::WindowViewModel> viewModel = model(0);
  ASSERT_EQ(pages.size(), 1U);
  window(0)->close();
  shell.settle();
  EXPECT_EQ(gtk_widget_get_parent(views[0].get()), nullptr);
  EXPECT_TRUE(shell.webViews.made[0].expired()) << "its page has ended";
  EXPECT_TRUE(viewModel.expired());
}

TEST_F(ContentViewTest, AnAnnouncementShowsAsTextWhenTheTabIsSeenUntilItIsClosed) {
  platform::NetworkMonitor network;
  integrations::AnnouncementService announcements(
      {shell.http, network, shell.application, shell.uriLauncher, shell.settings, "1.0"});
  auto window = shell.application.makeWindow({});
  auto viewModel = web::WindowViewModel::make(shell.services);
  viewModel->firstPage = web::RestoredPage();
  auto view = contentFactory(shell.services, [&](GtkRevealer* place) {
    return showAnnouncements(announcements, place);
  })(viewModel, window);
  integrations::Announcement news;
  news.message = "<b>New</b>\n" + std::string(5000, 'x');
  announcements.visible.set(news);
  auto* root = showWidget(content(0), 360);
  EXPECT_TRUE(visibleTexts(root).at(0).starts_with("<b>New</b> xxx"));
  EXPECT_LT(gtk_widget_get_height(find(root, "announcement")), 200);
  EXPECT_FALSE(buttonWithLabel(root, "More Info"));
  news.link = base::Url::parse("https://x.example/");
  announcements.visible.set(news);
  click(buttonWithLabel(root, "More Info"));
  EXPECT_EQ(shell.uriLauncher.opened, Texts{"https://x.example/"});
  auto* close = gtk_widget_get_last_child(find(root, "announcement-bar"));
  EXPECT_TRUE(hasAccessibleLabel(close, "Close"));
  gtk_widget_grab_focus(close);
  click(close);
  EXPECT_FALSE(gtk_revealer_get_reveal_child(GTK_REVEALER(find(root, "announcement"))));
  EXPECT_EQ(gtk_window_get_focus(topLevels[0].get()), pages.at(0).get());
}

} // namespace
} // namespace ondrel::ui
