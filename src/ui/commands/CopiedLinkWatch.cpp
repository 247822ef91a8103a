#include "ui/commands/CopiedLinkWatch.h"

#include "app/WindowManager.h"
#include "platform/Application.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

CopiedLinkWatch::CopiedLinkWatch(platform::Application& application, app::WindowManager& windows)
    : activation_(application.activated.subscribe([&windows] { windows.copiedLink().refresh(); })),
      clipboard_(glib::connect<void(GdkClipboard*)>(gdk_display_get_clipboard(gdk_display_get_default()),
                                                    "changed", [&application, &windows](GdkClipboard*) {
                                                      if (application.isActive())
                                                        windows.copiedLink().refresh();
                                                    })) {
}

} // namespace ondrel::ui
