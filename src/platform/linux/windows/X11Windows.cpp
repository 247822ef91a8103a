#include "platform/linux/windows/X11Windows.h"

#include "platform/linux/glib/Ref.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include <memory>

namespace ondrel::platform::x11 {

namespace {

G_GNUC_BEGIN_IGNORE_DEPRECATIONS

struct Target {
  GdkDisplay* gdkDisplay;
  GdkSurface* surface;
  Display* display;
  Window window;
};

std::optional<Target> target(GtkWindow* window) {
  auto* surface = gtk_native_get_surface(GTK_NATIVE(window));
  if (!surface || !GDK_IS_X11_SURFACE(surface))
    return std::nullopt;
  auto* display = gdk_surface_get_display(surface);
  return Target{display, surface, gdk_x11_display_get_xdisplay(display), gdk_x11_surface_get_xid(surface)};
}

// Windows of others vanish at any time: the errors of these calls are none of ours.
class ErrorTrap {
 public:
  explicit ErrorTrap(GdkDisplay* display) : display_(display) { gdk_x11_display_error_trap_push(display_); }
  ErrorTrap(const ErrorTrap&) = delete;
  ErrorTrap& operator=(const ErrorTrap&) = delete;
  ~ErrorTrap() { gdk_x11_display_error_trap_pop_ignored(display_); }

 private:
  GdkDisplay* display_;
};

struct FreeX {
  void operator()(unsigned char* data) const { XFree(data); }
};
struct Property {
  std::unique_ptr<unsigned char, FreeX> data;
  unsigned long count = 0;
  int format = 0;
};

Property property(Display* display, Window window, const char* name, Atom type) {
  constexpr long longest = 1024; // in units of 32 bits
  Property result;
  Atom actualType = 0;
  unsigned long left = 0;
  unsigned char* data = nullptr;
  if (XGetWindowProperty(display, window, XInternAtom(display, name, True), 0, longest, False, type,
                         &actualType, &result.format, &result.count, &left, &data) == Success)
    result.data.reset(data);
  if (actualType == 0 || !result.data)
    result.count = 0;
  return result;
}

// Null on other desktops.
GdkDisplay* x11Display() {
  auto* display = gdk_display_get_default();
  return display && GDK_IS_X11_DISPLAY(display) ? display : nullptr;
}

// As the window manager tells; 0 for none.
Window activeWindow(GdkDisplay* gdkDisplay) {
  auto* display = gdk_x11_display_get_xdisplay(gdkDisplay);
  const ErrorTrap trap(gdkDisplay);
  const auto active = property(display, DefaultRootWindow(display), "_NET_ACTIVE_WINDOW", XA_WINDOW);
  return active.count > 0 && active.format == 32 ? *reinterpret_cast<const Window*>(active.data.get()) : 0;
}

} // namespace

void outliveErrors() {
  if (auto* display = x11Display())
    gdk_x11_display_error_trap_push(display); // under all others, for good
}

void setProgramClass(const std::string& applicationId) {
  if (auto* display = x11Display())
    gdk_x11_display_set_program_class(display, applicationId.c_str());
}

std::optional<std::pair<int, int>> position(GtkWindow* window) {
  const auto x = target(window);
  if (!x)
    return std::nullopt;
  const ErrorTrap trap(x->gdkDisplay);
  int left = 0;
  int top = 0;
  Window child = 0;
  if (!XTranslateCoordinates(x->display, x->window, DefaultRootWindow(x->display), 0, 0, &left, &top, &child))
    return std::nullopt;
  return std::pair(left, top);
}

void move(GtkWindow* window, int left, int top) {
  if (const auto x = target(window)) {
    const ErrorTrap trap(x->gdkDisplay);
    XMoveWindow(x->display, x->window, left, top);
  }
}

void raise(GtkWindow* window) {
  if (const auto x = target(window)) {
    const ErrorTrap trap(x->gdkDisplay);
    XRaiseWindow(x->display, x->window);
  }
}

void mapWithoutFocus(GtkWindow* window) {
  gtk_widget_realize(GTK_WIDGET(window));
  if (const auto x = target(window))
    gdk_x11_surface_set_user_time(x->surface, 0);
}

bool isMapped(GtkWindow* window) {
  const auto x = target(window);
  if (!x)
    return false;
  const ErrorTrap trap(x->gdkDisplay);
  XWindowAttributes attributes{};
  return XGetWindowAttributes(x->display, x->window, &attributes) && attributes.map_state == IsViewable;
}

std::uint32_t serverTime(GtkWindow* window) {
  const auto x = target(window);
  return x ? gdk_x11_get_server_time(x->surface) : 0;
}

std::optional<std::string> activeApplicationId() {
  auto* gdkDisplay = x11Display();
  const auto window = gdkDisplay ? activeWindow(gdkDisplay) : 0;
  if (window == 0)
    return std::nullopt;
  auto* display = gdk_x11_display_get_xdisplay(gdkDisplay);
  const ErrorTrap trap(gdkDisplay);
  const auto id =
      property(display, window, "_GTK_APPLICATION_ID", XInternAtom(display, "UTF8_STRING", False));
  if (id.count > 0 && id.format == 8)
    return std::string(reinterpret_cast<const char*>(id.data.get()), id.count);
  // Two strings, each with its NUL: the instance and the class. The class is the application's name.
  const auto names = property(display, window, "WM_CLASS", XA_STRING);
  if (names.count == 0 || names.format != 8)
    return std::nullopt;
  const std::string text(reinterpret_cast<const char*>(names.data.get()), names.count);
  const auto end = text.find('\0');
  if (end == std::string::npos)
    return std::nullopt;
  return std::string(text.c_str() + end + 1);
}

// A window manager may still name one that was hidden or destroyed.
bool isOwnWindowActive() {
  auto* display = x11Display();
  const auto active = display ? activeWindow(display) : 0;
  auto* topLevels = gtk_window_get_toplevels();
  for (guint i = 0; active != 0 && i < g_list_model_get_n_items(topLevels); ++i) {
    const auto window = glib::adopt(GTK_WINDOW(g_list_model_get_item(topLevels, i)));
    const auto x = target(window.get());
    if (x && x->window == active && gtk_widget_get_mapped(GTK_WIDGET(window.get())))
      return true;
  }
  return false;
}

G_GNUC_END_IGNORE_DEPRECATIONS

} // namespace ondrel::platform::x11
