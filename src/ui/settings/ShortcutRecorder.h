#pragma once

#include "base/Event.h"
#include "platform/desktop/KeyCombination.h"
#include "platform/linux/glib/Connection.h"

#include <adwaita.h>

#include <optional>
#include <string>
#include <vector>

namespace ondrel::shortcuts {
class KeyboardShortcuts;
}

namespace ondrel::ui {

// The key alone that a press means, whatever is held and whatever layout is chosen; no key for one that is
// only held with others (Shift, Caps Lock). `state` as the press has it.
std::optional<platform::KeyCombination> combinationOf(GdkDisplay* display, guint keyval, guint keycode,
                                                      GdkModifierType state);

// A row that shows the keys of one global shortcut and lets the user record others.
class ShortcutRecorder {
 public:
  // The shortcuts outlive it.
  ShortcutRecorder(shortcuts::KeyboardShortcuts& shortcuts, std::string name, std::string title);
  ~ShortcutRecorder();
  ShortcutRecorder(const ShortcutRecorder&) = delete;
  ShortcutRecorder& operator=(const ShortcutRecorder&) = delete;

  GtkWidget* row() const { return GTK_WIDGET(row_.get()); }

  // A key is pressed while the user records.
  void press(const std::optional<platform::KeyCombination>& keys);

 private:
  void start();
  void stop();
  void update();

  shortcuts::KeyboardShortcuts& shortcuts_;
  const std::string name_;
  const std::string title_;
  const glib::Ref<AdwActionRow> row_;
  GtkButton* const record_;
  GtkButton* const clear_;
  bool isRecording_ = false;
  std::string hint_; // while recording
  base::Subscription paused_;
  glib::Ref<GtkEventController> keys_;
  std::vector<glib::Connection> connections_;
  glib::Connection pressed_;
  base::Subscription state_;
  base::Subscription availability_;
};

} // namespace ondrel::ui
