#include "platform/linux/windows/GrabbedShortcuts.h"

#include "async/EventLoop.h"
#include "base/Log.h"
#include "base/Translation.h"

#include <gdk/x11/gdkx.h>

#include <X11/keysym.h>

#include <memory>
#include <utility>

namespace ondrel::platform::windows {

namespace {

constexpr base::Logger logger("system");

G_GNUC_BEGIN_IGNORE_DEPRECATIONS

GdkDisplay* gdkDisplay() {
  auto* display = gdk_display_get_default();
  return display && GDK_IS_X11_DISPLAY(display) ? display : nullptr;
}

Display* xDisplay() {
  return gdk_x11_display_get_xdisplay(gdkDisplay());
}

unsigned modifiersOf(const KeyCombination& keys) {
  return (keys.shift ? ShiftMask : 0U) | (keys.control ? ControlMask : 0U) | (keys.alt ? Mod1Mask : 0U) |
         (keys.super ? Mod4Mask : 0U);
}

// Which of the eight modifiers Num Lock is on this keyboard; 0 for none.
unsigned numLockMask() {
  struct Free {
    void operator()(XModifierKeymap* map) const { XFreeModifiermap(map); }
  };
  const std::unique_ptr<XModifierKeymap, Free> map(XGetModifierMapping(xDisplay()));
  const auto numLock = XKeysymToKeycode(xDisplay(), XK_Num_Lock);
  constexpr int count = 8;
  for (int modifier = 0; map && numLock != 0 && modifier < count; ++modifier)
    for (int i = 0; i < map->max_keypermod; ++i)
      if (map->modifiermap[modifier * map->max_keypermod + i] == numLock)
        return 1U << modifier;
  return 0;
}

std::vector<unsigned> lockVariants() {
  const auto numLock = numLockMask();
  return {0, LockMask, numLock, LockMask | numLock};
}

constexpr const char* noSuchKey = base::trMark("This keyboard has no such key. Choose other keys.");
constexpr const char* taken = base::trMark("Another program has these keys. Choose other keys.");

} // namespace

GrabbedShortcuts::GrabbedShortcuts() {
  auto* display = gdkDisplay();
  isAvailable_.set(display != nullptr);
  if (display)
    events_ = glib::connect<gboolean(GdkDisplay*, gpointer)>(
        display, "xevent", [this](GdkDisplay*, gpointer event) -> gboolean { return handle(event); });
}

GrabbedShortcuts::~GrabbedShortcuts() {
  for (const auto& [name, shortcut] : shortcuts_)
    giveBack(shortcut.grab);
}

async::Task<std::expected<std::string, std::string>> GrabbedShortcuts::reserve(std::string name,
                                                                               KeyCombination keys) {
  if (auto grabbed = grab(name, keys); !grabbed)
    co_return std::unexpected(std::move(grabbed.error()));
  co_return "";
}

std::expected<void, std::string> GrabbedShortcuts::grab(const std::string& name, const KeyCombination& keys) {
  if (!*isAvailable_)
    return std::unexpected(base::tr("This desktop doesn't let programs reserve keys."));
  const auto symbol = XStringToKeysym(keys.key.c_str());
  const Grab wanted{symbol == NoSymbol ? 0U : XKeysymToKeycode(xDisplay(), symbol), modifiersOf(keys),
                    lockVariants()};
  if (wanted.keycode == 0)
    return std::unexpected(base::tr(noSuchKey));
  const auto before = shortcuts_.find(name);
  if (before == shortcuts_.end() || before->second.grab != wanted) {
    if (!take(wanted))
      return std::unexpected(base::tr(taken));
    release(name);
    take(wanted); // the two may overlap
  }
  shortcuts_[name] = {keys, wanted};
  return {};
}

void GrabbedShortcuts::release(const std::string& name) {
  const auto found = shortcuts_.find(name);
  if (found == shortcuts_.end())
    return;
  giveBack(found->second.grab);
  shortcuts_.erase(found);
}

bool GrabbedShortcuts::take(const Grab& grab) const {
  auto* display = xDisplay();
  gdk_x11_display_error_trap_push(gdkDisplay());
  for (const auto locks : grab.locks)
    XGrabKey(display, static_cast<int>(grab.keycode), grab.modifiers | locks, DefaultRootWindow(display),
             False, GrabModeAsync, GrabModeAsync);
  // Waits for the server's answers.
  const bool granted = gdk_x11_display_error_trap_pop(gdkDisplay()) == Success;
  if (!granted)
    giveBack(grab);
  return granted;
}

void GrabbedShortcuts::giveBack(const Grab& grab) const {
  if (!gdkDisplay())
    return;
  gdk_x11_display_error_trap_push(gdkDisplay());
  for (const auto locks : grab.locks)
    XUngrabKey(xDisplay(), static_cast<int>(grab.keycode), grab.modifiers | locks,
               DefaultRootWindow(xDisplay()));
  gdk_x11_display_error_trap_pop_ignored(gdkDisplay());
}

// The server keeps sending a reserved key's events to us until it is let go, whatever else was let go before.
bool GrabbedShortcuts::handle(void* data) {
  const auto& event = *static_cast<XEvent*>(data);
  if (event.type == MappingNotify) {
    keyboardChanged();
    return false;
  }
  if ((event.type != KeyPress && event.type != KeyRelease) ||
      event.xkey.window != DefaultRootWindow(event.xkey.display))
    return false;
  constexpr unsigned known = ShiftMask | ControlMask | Mod1Mask | Mod4Mask;
  for (auto& [name, shortcut] : shortcuts_) {
    if (shortcut.grab.keycode != event.xkey.keycode)
      continue;
    if (event.type == KeyPress) {
      shortcut.isDown = (event.xkey.state & known) == shortcut.grab.modifiers;
    } else if (std::exchange(shortcut.isDown, false)) {
      // Not from inside the toolkit's reading of events.
      async::EventLoop::current().post([this, alive = std::weak_ptr(alive_), released = name] {
        if (!alive.expired())
          performed.emit(released);
      });
    }
  }
  return true;
}

// The same keys may be elsewhere now.
void GrabbedShortcuts::keyboardChanged() {
  async::EventLoop::current().post([this, alive = std::weak_ptr(alive_)] {
    if (alive.expired())
      return;
    for (const auto& [name, shortcut] : std::map(shortcuts_))
      if (const auto grabbed = grab(name, shortcut.keys); !grabbed)
        logger.error("A global shortcut is lost with the new keyboard: {}", grabbed.error());
  });
}

G_GNUC_END_IGNORE_DEPRECATIONS

} // namespace ondrel::platform::windows
