#pragma once

#include <gtk/gtk.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

// What GTK has no call for, asked of the X server directly. On other desktops all of it gives nothing and
// does nothing.
namespace ondrel::platform::x11 {

// From now on requests that the server refuses do nothing. GTK ends the process for any such error, and makes
// one by itself when the scale changes after a window has closed.
void outliveErrors();
// By what panels and docks find the desktop file of the windows that are made from now on: WM_CLASS, for
// those that don't ask for the application's id. GTK would give the name of the executable.
void setProgramClass(const std::string& applicationId);
// Top left corner on the screen, in device pixels; absent while the window has no surface.
std::optional<std::pair<int, int>> position(GtkWindow* window);
// Asks the window manager, which hears it once the window is on screen.
void move(GtkWindow* window, int x, int y);
void raise(GtkWindow* window);
// Before the window is shown: it won't take the keyboard then.
void mapWithoutFocus(GtkWindow* window);
bool isMapped(GtkWindow* window);
// The server's time, with which a window manager lets a window come to the front; 0 elsewhere.
std::uint32_t serverTime(GtkWindow* window);

// The id of the application whose window is active.
std::optional<std::string> activeApplicationId();
// The active window is one of this program's, whoever has the keyboard at the moment.
bool isOwnWindowActive();

} // namespace ondrel::platform::x11
