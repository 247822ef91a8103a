#include "DesktopTest.h"
#include "async/sleep.h"

namespace ondrel::platform {

namespace {

using Strings = std::vector<std::string>;

class TabsTest : public DesktopTest {
 protected:
  // Three tabs a, b, c in one top-level on screen, a in front.
  void makeThree() {
    a = make("a");
    b = make("b");
    c = make("c");
    a->addTabbedWindow(b);
    b->addTabbedWindow(c);
    a->present();
    ASSERT_TRUE(until([this] { return a->isVisible(); }));
  }

  // What the tab bar does when a tab is dropped on the desktop.
  static void dragOut(const std::shared_ptr<windows::TabWindow>& window) {
    auto* view = window->group()->tabView();
    AdwTabView* target = nullptr;
    g_signal_emit_by_name(view, "create-window", &target);
    adw_tab_view_transfer_page(view, window->page(), target, 0);
  }

  // Some turns later, as a page does.
  static async::Task<bool> answered(Strings& asked, std::string names, const bool& answer) {
    asked.push_back(std::move(names));
    co_await async::sleep(std::chrono::milliseconds(20));
    co_return answer;
  }

  std::shared_ptr<windows::TabWindow> a, b, c;
};

TEST_F(TabsTest, StandInOrderAndAreNotSelectedWhenAdded) {
  run([this] {
    makeThree();
    const auto d = make("d");
    a->addTabbedWindow(d);
    ASSERT_TRUE(a->tabGroup());
    EXPECT_EQ(names(a->tabGroup()->windows()), "adbc");
    EXPECT_EQ(a->tabGroup(), c->tabGroup()) << "one group, one identity";
    EXPECT_EQ(a->tabGroup()->selectedWindow(), a);
    EXPECT_EQ(names(application.windows()), "abcd") << "in the order of making";

    c->addTabbedWindow(a); // within the group
    EXPECT_EQ(names(a->tabGroup()->windows()), "dbca");
    EXPECT_EQ(a->tabGroup()->selectedWindow(), a);
    a->selectNextTab(); // wraps
    EXPECT_EQ(a->tabGroup()->selectedWindow(), d);
    EXPECT_TRUE(d->isVisible());
    EXPECT_FALSE(a->isVisible());
    d->selectPreviousTab();
    EXPECT_EQ(a->tabGroup()->selectedWindow(), a);
    adw_tab_view_reorder_page(a->group()->tabView(), a->page(), 0); // as by the user's drag
    EXPECT_EQ(names(a->tabGroup()->windows()), "adbc");
    EXPECT_EQ(names(application.orderedWindows()), "adbc");
  });
}

TEST_F(TabsTest, AStandaloneWindowTakesNoTabs) {
  run([this] {
    makeThree();
    WindowAttributes attributes;
    attributes.identifier = "lone";
    attributes.standalone = true;
    const auto lone = application.makeWindow(attributes);
    lone->setContent({gtk_label_new("content")});
    lone->present();
    ASSERT_TRUE(until([&] { return lone->isVisible(); }));
    const auto d = make("d");
    lone->addTabbedWindow(d);
    EXPECT_TRUE(until([&] { return d->isVisible() && lone->isVisible(); })) << "beside it, for all to see";
    EXPECT_NE(windows::topLevelOf(d), windows::topLevelOf(lone));
    a->addTabbedWindow(lone);
    EXPECT_EQ(names(a->tabGroup()->windows()), "abc");
    EXPECT_EQ(lone->tabGroup(), nullptr);

    const auto* topLevel = windows::topLevelOf(lone);
    ASSERT_TRUE(topLevel);
    lone->close();
    EXPECT_TRUE(until([&] { return windows::topLevelOf(lone) == nullptr; }));
  });
}

TEST_F(TabsTest, OrderedOutTheyLiveOnAndComeBackToTheirPlace) {
  run([this] {
    makeThree();
    b->withdraw();
    EXPECT_EQ(names(a->tabGroup()->windows()), "ac");
    EXPECT_EQ(names(application.windows()), "abc") << "it is open";
    EXPECT_TRUE(b->isWithdrawn());
    EXPECT_EQ(b->tabGroup(), nullptr);
    EXPECT_TRUE(windows::topLevelOf(b)) << "its page has a root";
    application.hide();
    application.unhide();
    EXPECT_FALSE(b->isVisible());
    b->present();
    EXPECT_EQ(names(a->tabGroup()->windows()), "abc");
    EXPECT_TRUE(b->isVisible());
    EXPECT_FALSE(b->isWithdrawn());

    // Alone, and while the whole program is hidden: it stays behind when the others come back.
    c->withdraw();
    a->close();
    b->close();
    const auto d = make("d");
    d->present();
    ASSERT_TRUE(until([&] { return d->isVisible(); }));
    application.hide();
    d->withdraw();
    application.unhide();
    EXPECT_FALSE(d->isVisible());
    c->present();
    d->showUnfocused();
    EXPECT_TRUE(until([&] { return c->isVisible() && d->isVisible(); })) << "its tabs have gone meanwhile";
    d->withdraw();
    d->close();
    EXPECT_EQ(willClose, (Strings{"a", "b", "d"}));
  });
}

TEST_F(TabsTest, ShowNothingUntilTheyAreShown) {
  run([this] {
    const auto before = topLevelCount();
    const auto first = make("first");
    const auto second = make("second");
    EXPECT_EQ(topLevelCount(), before);
    EXPECT_EQ(first->tabGroup(), nullptr);
    first->addTabbedWindow(second);
    EXPECT_FALSE(gtk_widget_get_visible(GTK_WIDGET(windows::topLevelOf(first))));
    EXPECT_EQ(application.frontWindow(), nullptr);
    second->present();
    EXPECT_TRUE(second->isVisible());
    EXPECT_EQ(topLevelCount(), before + 1);
    EXPECT_EQ(application.frontWindow(), second);
  });
}

TEST_F(TabsTest, MapTheirContentWhenTheyAreShownAndNotBefore) {
  run([this] {
    a = make("a");
    b = make("b");
    std::string mapped;
    std::vector<glib::Connection> connections;
    for (const auto& window : {a, b}) {
      auto* content = gtk_label_new("content");
      connections.push_back(glib::connect<void(GtkWidget*)>(
          content, "map", [&mapped, name = window->identifier()](GtkWidget*) { mapped += name; }));
      window->setContent({content});
    }
    a->present();
    a->addTabbedWindow(b);
    ASSERT_TRUE(until([&] { return !mapped.empty(); }));
    turn();
    EXPECT_EQ(mapped, "a");
    a->selectNextTab();
    ASSERT_TRUE(until([&] { return mapped.size() > 1; }));
    EXPECT_EQ(mapped, "ab");
  });
}

TEST_F(TabsTest, MoveBetweenTopLevelsWithTheirIdentity) {
  run([this] {
    makeThree();
    const auto before = topLevelCount();
    const auto source = a->tabGroup();
    bool wasAlone = false;
    const auto dragged = glib::connect<void(AdwTabView*, AdwTabPage*, int)>(
        a->group()->tabView(), "page-detached", [&](AdwTabView*, AdwTabPage*, int) {
          wasAlone = !b->tabGroup() && a->tabGroup() == source;
          b->present(); // its page is with the pointer
        });
    dragOut(b);
    EXPECT_TRUE(wasAlone) << "it is in no group while it is dragged";
    EXPECT_EQ(names(source->windows()), "ac");
    EXPECT_EQ(b->tabGroup(), nullptr) << "alone";
    EXPECT_TRUE(b->isVisible());
    EXPECT_EQ(topLevelCount(), before + 1);
    EXPECT_EQ(application.frontWindow(), b);
    EXPECT_EQ(names(application.orderedWindows()), "bac");

    adw_tab_view_transfer_page(b->group()->tabView(), b->page(), a->group()->tabView(), 0); // dropped back
    EXPECT_EQ(names(source->windows()), "bac");
    EXPECT_EQ(b->tabGroup(), source);
    turn();
    EXPECT_EQ(topLevelCount(), before) << "an empty top-level goes";

    dragOut(c);
    c->addTabbedWindow(a);
    c->addTabbedWindow(b);
    turn();
    EXPECT_EQ(names(c->tabGroup()->windows()), "cba");
    EXPECT_EQ(c->tabGroup()->selectedWindow(), c);
    EXPECT_EQ(topLevelCount(), before);
    EXPECT_EQ(willClose, Strings()) << "nothing was closed";
  });
}

// The virtual display has nothing behind the windows.
TEST_F(TabsTest, ADragOntoTheBareRootEndsInATopLevelOfItsOwn) {
  support::toleratedComplaint = "GDK_DRAG_PROTO_ROOTWIN";
  run([this] {
    makeThree();
    settle();
    std::string command = "bash -c 'xdotool mousemove 60 68 mousedown 1 sleep 0.3";
    for (int i = 1; i <= 10; ++i)
      command += fmt::format(" mousemove {} {} sleep 0.05", 60 + 70 * i, 68 + 70 * i);
    command += " sleep 0.5 mouseup 1'";
    ASSERT_TRUE(g_spawn_command_line_async(command.c_str(), nullptr));
    const auto source = a->group();
    ASSERT_TRUE(until([&] { return source->size() == 2; }));
    EXPECT_EQ(a->tabGroup(), nullptr) << "on its way";
    EXPECT_TRUE(until([&] { return a->group() != source && a->isVisible(); }));
    settle();
  });
  support::toleratedComplaint.clear();
}

TEST_F(TabsTest, TellOnceThatTheyCloseByWhateverWay) {
  run([this] {
    makeThree();
    const auto d = make("d");
    a->addTabbedWindow(d);
    b->setFrame({0, 0, 640, 480});
    const auto whileClosing = application.windowWillClose.subscribe([&](std::shared_ptr<Window> window) {
      EXPECT_EQ(std::dynamic_pointer_cast<windows::TabWindow>(window)->isClosed(), false);
      window->close(); // has begun already
      EXPECT_NE(names(application.windows()).find(window->identifier()), std::string::npos);
    });
    auto* content = gtk_label_new("content");
    const glib::WeakRef<GtkWidget> weakContent(content);
    b->setContent({content});

    b->close();
    EXPECT_EQ(willClose, (Strings{"b"}));
    EXPECT_EQ(names(application.windows()), "acd");
    EXPECT_EQ(b->frame().width, 640);
    EXPECT_EQ(b->tabGroup(), nullptr);
    turn();
    EXPECT_FALSE(weakContent.lock()) << "a closed window keeps no content";
    b->present();
    b->setTitle("dead");
    b->close();

    adw_tab_view_close_page(d->group()->tabView(), d->page()); // the tab's own button
    EXPECT_EQ(willClose, (Strings{"b", "d"}));
    gtk_window_close(windows::topLevelOf(a)); // the top-level's button
    EXPECT_TRUE(until([this] { return willClose.size() == 4; }));
    EXPECT_EQ(willClose, (Strings{"b", "d", "a", "c"}));
    EXPECT_EQ(names(application.windows()), "");
    EXPECT_EQ(a->frame().width, 640);
    turn();
    EXPECT_EQ(topLevelCount(), 0U);

    const auto neverShown = make("e");
    neverShown->close();
    EXPECT_EQ(willClose.back(), "e");
    EXPECT_EQ(names(application.windows()), "");
  });
}

TEST_F(TabsTest, TellTheChromeWhoIsInFront) {
  class Chrome final : public GroupChrome {
   public:
    explicit Chrome(Strings& log) : log_(log) {}
    ~Chrome() override { log_.push_back("gone"); }
    NativeView topBar() override { return {bar_.get()}; }
    void selectedWindowDidChange(std::shared_ptr<Window> window) override {
      log_.push_back(window ? window->identifier() : "none");
    }

   private:
    Strings& log_;
    glib::Ref<GtkWidget> bar_ = glib::share(adw_header_bar_new());
  };
  Strings log;
  run([&] {
    application.setChromeFactory([&log] { return std::make_unique<Chrome>(log); });
    makeThree();
    EXPECT_EQ(log, (Strings{"none", "a"}));
    a->selectNextTab();
    b->close();
    EXPECT_EQ(log, (Strings{"none", "a", "b", "c"}));
    c->close();
    a->close();
    turn();
    EXPECT_EQ(log, (Strings{"none", "a", "b", "c", "a", "none", "gone"}));
  });
}

TEST_F(TabsTest, CloseAsTheUserWishesOnlyWhenTheyMay) {
  run([this] {
    makeThree();
    Strings asked;
    bool may = false;
    application.setCloseQuestion(
        [&](std::vector<std::shared_ptr<Window>> windows) { return answered(asked, names(windows), may); });
    auto* view = a->group()->tabView();
    const auto others = [&] {
      AdwTabPage* page = b->page();
      g_signal_emit_by_name(view, "setup-menu", page);
      gtk_widget_activate_action(GTK_WIDGET(view), "tab.close-others", nullptr);
    };
    const std::function<void()> ways[] = {[&] { b->requestClose(); },
                                          [&] { adw_tab_view_close_page(view, b->page()); }, others,
                                          [&] { gtk_window_close(a->group()->gtkWindow()); }};
    for (const auto& way : ways) {
      way();
      way(); // while the first is being asked about
      settle();
    }
    EXPECT_EQ(asked, (Strings{"b", "b", "ac", "abc"}));
    EXPECT_EQ(names(application.windows()), "abc");
    may = true;
    b->requestClose();
    EXPECT_TRUE(until([&] { return b->isClosed(); }));
    gtk_window_close(a->group()->gtkWindow());
    EXPECT_TRUE(until([&] { return application.windows().empty(); }));
    EXPECT_EQ(willClose, (Strings{"b", "a", "c"}));
    application.setCloseQuestion(nullptr);
  });
}

TEST_F(TabsTest, ShowTitlesOfAnyBytesSafely) {
  run([this] {
    makeThree();
    const auto title = [this] { return std::string(gtk_window_get_title(windows::topLevelOf(a))); };
    EXPECT_EQ(title(), "a");
    a->setTitle("Inbox\n\u202Egnp.exe\xff");
    EXPECT_EQ(title(), "Inbox gnp.exe\uFFFD");
    a->setTitle("");
    EXPECT_EQ(title(), "Test") << "the application's name";
    a->setTitle(std::string(1 << 20, 'x'));
    EXPECT_LT(title().size(), 1000U);
    a->setBusy(true);
    EXPECT_TRUE(adw_tab_page_get_loading(a->page()));
    b->setTitle("behind");
    EXPECT_NE(title(), "behind");
    a->selectNextTab();
    EXPECT_EQ(title(), "behind");
  });
}

TEST_F(TabsTest, AreClosedForWhoHoldsThemWhenTheApplicationHasGone) {
  std::shared_ptr<windows::TabWindow> held;
  {
    glib::GlibEventLoop ownLoop;
    windows::LinuxApplication other(
        {.applicationId = fmt::format("org.velmora.Ondrel.Other{}", getpid()), .displayName = "Test"});
    int told = 0;
    const auto subscription = other.windowWillClose.subscribe([&](std::shared_ptr<Window>) { ++told; });
    other.run({}, [&] {
      held = std::dynamic_pointer_cast<windows::TabWindow>(other.makeWindow({}));
      held->present();
      other.quit();
    });
    EXPECT_FALSE(held->isClosed()) << "the windows are still there when the program has run";
    EXPECT_EQ(told, 0);
  }
  EXPECT_TRUE(held->isClosed());
  held->present();
  held->close();
}

} // namespace

} // namespace ondrel::platform
