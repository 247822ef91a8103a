#include "DesktopTest.h"

#include "platform/linux/windows/X11Windows.h"

#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>

#include <algorithm>

namespace ondrel::platform {

namespace {

using Strings = std::vector<std::string>;

class ApplicationTest : public DesktopTest {
 protected:
  // As a window manager would, which there is none of here.
  static void giveKeyboard(GtkWindow* window) {
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    auto* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());
    const auto target =
        window ? gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(window))) : ::Window(None);
    XSetInputFocus(display, target, RevertToNone, CurrentTime);
    XSync(display, False);
    G_GNUC_END_IGNORE_DEPRECATIONS
  }
  std::shared_ptr<windows::TabWindow> show(const std::string& name) {
    auto window = make(name);
    window->present();
    EXPECT_TRUE(until([&] { return x11::isMapped(windows::topLevelOf(window)); }));
    return window;
  }
};

TEST_F(ApplicationTest, KnowsWhoHasTheKeyboard) {
  Strings log;
  const base::Subscription subscriptions[] = {
      application.activated.subscribe([&] { log.push_back("active"); }),
      application.deactivating.subscribe([&] { log.push_back("resign"); }),
      application.windowFocused.subscribe(
          [&](std::shared_ptr<Window> w) { log.push_back(w->identifier()); })};
  run([&] {
    const auto a = show("a");
    const auto b = make("b");
    a->addTabbedWindow(b);
    const auto c = show("c");
    settle();
    giveKeyboard(windows::topLevelOf(a));
    ASSERT_TRUE(until([&] { return application.focusedWindow() == a; }));
    EXPECT_EQ(application.frontWindow(), a);
    EXPECT_EQ(names(application.orderedWindows()), "abc");
    EXPECT_TRUE(application.isActive());
    a->selectNextTab();
    EXPECT_EQ(application.focusedWindow(), b);

    log.clear();
    giveKeyboard(windows::topLevelOf(c)); // to another of our own
    ASSERT_TRUE(until([&] { return application.focusedWindow() == c; }));
    EXPECT_EQ(names(application.orderedWindows()), "cba");
    EXPECT_EQ(std::ranges::count(log, "resign"), 0);
    EXPECT_EQ(log.back(), "c");
    settle();
    log.clear();

    giveKeyboard(nullptr); // to another application
    ASSERT_TRUE(until([&] { return !application.isActive(); }));
    EXPECT_EQ(application.focusedWindow(), nullptr);
    EXPECT_EQ(application.frontWindow(), c);
    giveKeyboard(windows::topLevelOf(c));
    ASSERT_TRUE(until([&] { return application.isActive(); }));
    EXPECT_EQ(log, (Strings{"resign", "active", "c"}));

    c->close();
    EXPECT_EQ(application.frontWindow(), b);
  });
}

TEST_F(ApplicationTest, HidesAllAndComesBack) {
  run([&] {
    const auto a = show("a");
    a->setFrame({200, 100, 700, 400});
    auto* dialog = gtk_window_new(); // a top-level that isn't ours counts too
    gtk_window_set_transient_for(GTK_WINDOW(dialog), windows::topLevelOf(a));
    gtk_window_present(GTK_WINDOW(dialog));
    ASSERT_TRUE(
        until([&] { return a->frame() == Rect{200, 100, 700, 400} && x11::isMapped(GTK_WINDOW(dialog)); }));
    settle();
    giveKeyboard(GTK_WINDOW(dialog));
    ASSERT_TRUE(until([&] { return gtk_window_is_active(GTK_WINDOW(dialog)) != FALSE; }));

    application.hide();
    application.hide();
    EXPECT_TRUE(application.isHidden());
    EXPECT_FALSE(a->isVisible());
    EXPECT_FALSE(gtk_widget_get_visible(dialog));
    EXPECT_EQ(application.frontWindow(), nullptr);
    EXPECT_EQ(a->frame(), (Rect{200, 100, 700, 400}));

    application.unhide();
    EXPECT_FALSE(application.isHidden());
    ASSERT_TRUE(until([&] { return a->isVisible() && x11::isMapped(windows::topLevelOf(a)); }));
    EXPECT_TRUE(gtk_widget_get_visible(dialog));
    EXPECT_TRUE(until([&] { return x11::position(windows::topLevelOf(a)) == std::pair(200, 100); }));
    application.activate();
    settle();
    EXPECT_TRUE(gtk_window_is_active(GTK_WINDOW(dialog))) << "it had the keyboard";

    application.hide();
    const auto b = make("b");
    b->showUnfocused();
    EXPECT_FALSE(application.isHidden()) << "a window that is ordered to the front brings the program back";
    EXPECT_TRUE(a->isVisible());
    gtk_window_destroy(GTK_WINDOW(dialog));
  });
}

TEST_F(ApplicationTest, IsLeftWhenItsLastWindowCloses) {
  run([&] {
    const auto a = show("a");
    ASSERT_TRUE(until([&] { return application.isActive(); }));
    a->close();
    EXPECT_TRUE(until([&] { return !application.isActive(); }));
  });
}

TEST_F(ApplicationTest, ComesToTheFrontWithTheTokenOfAClick) {
  run([&] {
    show("a");
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    auto* display = gdk_display_get_default();
    gdk_x11_display_set_startup_notification_id(display, "of the start");
    application.activate();
    EXPECT_STREQ(gdk_x11_display_get_startup_notification_id(display), "of the start");
    application.setActivationToken("of-the-click_TIME424242");
    application.activate();
    EXPECT_STREQ(gdk_x11_display_get_startup_notification_id(display), "of-the-click_TIME424242");
    G_GNUC_END_IGNORE_DEPRECATIONS
  });
}

TEST_F(ApplicationTest, KeepsALinkThatComesInTheTurnOfItsEnd) {
  auto& loop = async::EventLoop::current();
  const auto end = [&] {
    application.quit();
    const auto link = glib::adopt(g_file_new_for_uri("mailto:late@x"));
    GFile* links[] = {link.get()};
    g_application_open(G_APPLICATION(application.native()), links, 1, "");
  };
  EXPECT_EQ(application.run({}, [&] { loop.post([&] { loop.post(end); }); }), 0);
  EXPECT_EQ(application.leftOver(), Strings{"mailto:late@x"});
}

TEST_F(ApplicationTest, PutsWindowsWhereTheyBelong) {
  run([&] {
    const auto a = make("a");
    a->setFrame({120, 80, 640, 420});
    EXPECT_EQ(a->frame(), (Rect{120, 80, 640, 420}));
    a->present();
    ASSERT_TRUE(until([&] { return x11::isMapped(windows::topLevelOf(a)); }));
    EXPECT_TRUE(until([&] { return x11::position(windows::topLevelOf(a)) == std::pair(120, 80); }));
    EXPECT_EQ(a->frame(), (Rect{120, 80, 640, 420}));

    a->setFrame({99999, 99999, 1e9, -1});
    turn();
    const auto frame = a->frame();
    EXPECT_GE(frame.x, 0);
    EXPECT_LT(frame.x, 99999) << "back on the monitor";
    EXPECT_EQ(frame.height, 420) << "what is no size changes nothing";
    const auto last = a->frame();
    a->close();
    EXPECT_EQ(a->frame(), last);
  });
}

TEST_F(ApplicationTest, OutlivesWhatTheServerRefuses) {
  run([] {
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    auto* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());
    G_GNUC_END_IGNORE_DEPRECATIONS
    XResizeWindow(display, 1, 10, 10); // no window
    XSync(display, False);
  });
}

TEST_F(ApplicationTest, ShowsKeysToMonitorsBeforeAnybodyElse) {
  run([&] {
    const auto a = show("a");
    std::string log;
    auto first = application.addKeyDownMonitor([&](const KeyEvent& event) {
      log += "1" + event.characters;
      return event.characters == "1";
    });
    base::Subscription second;
    second = application.addKeyDownMonitor([&](const KeyEvent&) {
      log += "2";
      second.reset();
      return false;
    });
    const auto controllers = glib::adopt(gtk_widget_observe_controllers(GTK_WIDGET(windows::topLevelOf(a))));
    const auto press = [&](guint keyval) {
      for (guint i = 0; i < g_list_model_get_n_items(controllers.get()); ++i) {
        const auto controller =
            glib::adopt(GTK_EVENT_CONTROLLER(g_list_model_get_item(controllers.get(), i)));
        if (!GTK_IS_EVENT_CONTROLLER_KEY(controller.get()) ||
            gtk_event_controller_get_propagation_phase(controller.get()) != GTK_PHASE_CAPTURE)
          continue;
        gboolean consumed = FALSE;
        g_signal_emit_by_name(controller.get(), "key-pressed", keyval, 0U, GDK_CONTROL_MASK, &consumed);
        return consumed != FALSE;
      }
      ADD_FAILURE() << "nobody listens for keys";
      return false;
    };
    EXPECT_TRUE(press(GDK_KEY_1));
    EXPECT_EQ(log, "11");
    EXPECT_FALSE(press(GDK_KEY_2));
    EXPECT_EQ(log, "11122");
    EXPECT_FALSE(press(GDK_KEY_3));
    first.reset();
    EXPECT_FALSE(press(GDK_KEY_1));
    EXPECT_EQ(log, "1112213");
  });
}

} // namespace

} // namespace ondrel::platform
