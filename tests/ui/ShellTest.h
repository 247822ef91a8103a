#pragma once

#include "Toolkit.h"
#include "support/TestShell.h"
#include "ui/page/ContentView.h"

#include <gtest/gtest.h>

#include <map>

namespace ondrel::ui {

// The program's core on fakes, with the real contents of its windows on a display.
class ShellTest : public testing::Test {
 protected:
  void SetUp() override {
    shell.webViews.onMake = [this](support::FakeWebView& view) {
      auto page = glib::share(gtk_drawing_area_new());
      gtk_widget_set_focusable(page.get(), TRUE);
      gtk_widget_set_name(page.get(), "page");
      // As the engine's, the view is a mere container around what takes the keyboard.
      auto container = glib::share(adw_bin_new());
      adw_bin_set_child(ADW_BIN(container.get()), page.get());
      view.native = {container.get()};
      views.push_back(std::move(container));
      pages.push_back(std::move(page));
    };
  }
  void TearDown() override {
    for (const auto& window : topLevels)
      gtk_window_destroy(window.get());
    shell.manager = nullptr;
  }

  void start() {
    shell.closedTabs.emplace(shell.files, shell.files);
    shell.manager = std::make_unique<app::WindowManager>(
        shell.application, shell.settings, shell.sessionStore, *shell.closedTabs, shell.clipboard,
        shell.services, contentFactory(shell.services));
    shell.settle();
  }

  std::shared_ptr<support::FakeWindow> window(std::size_t index) { return shell.application.all.at(index); }
  std::shared_ptr<web::WindowViewModel> model(std::size_t index) {
    return shell.manager->windows().viewModel(window(index));
  }
  GtkWidget* content(std::size_t index) { return static_cast<GtkWidget*>(window(index)->content.handle); }

  // Brings the tab in front, as the windows of the desktop do.
  GtkWidget* show(std::size_t index) { return showWidget(content(index)); }
  // In a top-level of its own, away from where it was.
  GtkWidget* showWidget(GtkWidget* widget, int width = 800) {
    for (const auto& window : topLevels)
      if (gtk_window_get_child(window.get()) == widget)
        gtk_window_set_child(window.get(), nullptr);
    auto* topLevel = GTK_WINDOW(gtk_window_new());
    topLevels.push_back(glib::share(topLevel));
    gtk_window_set_default_size(topLevel, width, 600);
    gtk_window_set_child(topLevel, widget);
    gtk_window_present(topLevel);
    EXPECT_TRUE(runUntil([&] { return gtk_widget_get_mapped(widget) && gtk_widget_get_width(widget) > 0; }));
    return widget;
  }

  support::TestShell shell;
  std::vector<glib::Ref<GtkWidget>> views;
  std::vector<glib::Ref<GtkWidget>> pages; // in the views
  std::vector<glib::Ref<GtkWindow>> topLevels;
};

} // namespace ondrel::ui
