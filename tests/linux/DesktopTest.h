#pragma once

#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/windows/LinuxApplication.h"
#include "platform/linux/windows/TabGroupWindow.h"
#include "platform/linux/windows/TabWindow.h"
#include "support/Complaints.h"
#include "support/MainLoop.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform {

// A test with real windows: needs a display. Warnings of the toolkit fail it.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest() {
    support::failOnComplaints();
    desktop::chooseRendering(); // as the program does
    closed = application.windowWillClose.subscribe(
        [this](std::shared_ptr<Window> window) { willClose.push_back(window->identifier()); });
  }

  // Runs the body once windows can be made.
  void run(const std::function<void()>& body) {
    bool ran = false;
    const int status = application.run({}, [&] {
      body();
      ran = true;
      application.quit();
    });
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(ran) << "is there no display?";
  }

  static bool until(const std::function<bool()>& holds) { return support::runUntil(holds); }
  // Lets the X server and the toolkit come to rest after windows were shown: they move the keyboard about for
  // a while.
  static void settle() { support::runFor(std::chrono::milliseconds(250)); }
  static void turn() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
  }

  std::shared_ptr<windows::TabWindow> make(const std::string& name) {
    auto window = std::dynamic_pointer_cast<windows::TabWindow>(application.makeWindow(
        {.contentWidth = 600, .contentHeight = 500, .tabbingIdentifier = "", .identifier = name}));
    window->setTitle(name);
    return window;
  }
  static std::string names(const std::vector<std::shared_ptr<Window>>& windows) {
    std::string result;
    for (const auto& window : windows)
      result += window->identifier();
    return result;
  }
  static guint topLevelCount() { return g_list_model_get_n_items(gtk_window_get_toplevels()); }

  glib::GlibEventLoop loop;
  windows::LinuxApplication application{
      {.applicationId = fmt::format("org.velmora.Ondrel.Test{}", getpid()), .displayName = "Test"}};
  std::vector<std::string> willClose;
  base::Subscription closed;
};

} // namespace ondrel::platform
