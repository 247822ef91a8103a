#pragma once

#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/webkit/WebKitViewFactory.h"

#include <gtk/gtk.h>

namespace ondrel::bench {

// The web engine as the program uses it, with a profile that nothing is kept of, and a window to show its
// views in. One for the process, before anything else of the toolkit.
class EngineWindow {
 public:
  EngineWindow() {
    const bool software = platform::desktop::chooseRendering() == platform::desktop::Rendering::software;
    gtk_init();
    platform::webkit::WebKitOptions options;
    options.extensionFolder = ONDREL_EXTENSION_FOLDER;
    options.softwareRendering = software;
    options.ephemeral = true;
    factory_ = std::make_unique<platform::webkit::WebKitViewFactory>(options);
    window_ = GTK_WINDOW(gtk_window_new());
  }
  EngineWindow(const EngineWindow&) = delete;
  EngineWindow& operator=(const EngineWindow&) = delete;
  ~EngineWindow() { gtk_window_destroy(window_); }

  platform::webkit::WebKitViewFactory& factory() { return *factory_; }
  GtkWindow* window() { return window_; }
  void show(GtkWidget* content) {
    gtk_window_set_child(window_, content);
    gtk_window_present(window_);
  }

 private:
  glib::GlibEventLoop loop_;
  std::unique_ptr<platform::webkit::WebKitViewFactory> factory_;
  GtkWindow* window_ = nullptr;
};

} // namespace ondrel::bench
