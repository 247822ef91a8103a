#include "ui/settings/ShortcutRecorder.h"

#include "base/Translation.h"
#include "shortcuts/KeyCombinationText.h"
#include "shortcuts/KeyboardShortcuts.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

#include <utility>

namespace ondrel::ui {

namespace {

constexpr const char* unavailable =
    base::trMark("This desktop doesn't let programs reserve keys. In its own settings, "
                 "give keys to the command “ondrel --toggle”.");
constexpr const char* recording =
    base::trMark("Press the keys. Esc keeps what was there, Backspace takes it away.");
constexpr const char* held = base::trMark("Hold Ctrl, Alt or Super with it.");
constexpr const char* explanation = base::trMark("Works whichever application is in front.");

bool isHeldOnly(guint keyval) {
  return (keyval >= GDK_KEY_Shift_L && keyval <= GDK_KEY_Hyper_R) ||
         (keyval >= GDK_KEY_ISO_Lock && keyval <= GDK_KEY_ISO_Level5_Lock) || keyval == GDK_KEY_Num_Lock ||
         keyval == GDK_KEY_Mode_switch;
}

// Without Shift; of the layouts, the first that has a Latin letter or a key with a function there.
guint plainKey(GdkDisplay* display, guint keycode, guint fallback) {
  constexpr guint firstFunction = 0xFD00;
  guint result = 0;
  GdkKeymapKey* keys = nullptr;
  guint* values = nullptr;
  int count = 0;
  if (gdk_display_map_keycode(display, keycode, &keys, &values, &count)) {
    for (int i = 0; i < count && result == 0; ++i)
      if (keys[i].level == 0 && (values[i] < 0x80 || values[i] >= firstFunction))
        result = values[i];
    g_free(keys);
    g_free(values);
  }
  return result != 0 ? result : gdk_keyval_to_lower(fallback);
}

GtkButton* flatButton(const char* identifier) {
  auto* button = GTK_BUTTON(gtk_button_new());
  gtk_widget_set_name(GTK_WIDGET(button), identifier);
  gtk_widget_set_valign(GTK_WIDGET(button), GTK_ALIGN_CENTER);
  return button;
}

} // namespace

std::optional<platform::KeyCombination> combinationOf(GdkDisplay* display, guint keyval, guint keycode,
                                                      GdkModifierType state) {
  if (isHeldOnly(keyval))
    return std::nullopt;
  const char* name = gdk_keyval_name(plainKey(display, keycode, keyval));
  if (!name)
    return std::nullopt;
  return platform::KeyCombination{(state & GDK_CONTROL_MASK) != 0, (state & GDK_ALT_MASK) != 0,
                                  (state & GDK_SHIFT_MASK) != 0, (state & GDK_SUPER_MASK) != 0, name};
}

ShortcutRecorder::ShortcutRecorder(shortcuts::KeyboardShortcuts& shortcuts, std::string name,
                                   std::string title)
    : shortcuts_(shortcuts), name_(std::move(name)), title_(std::move(title)),
      row_(glib::share(ADW_ACTION_ROW(adw_action_row_new()))), record_(flatButton("record")),
      clear_(flatButton("clear")) {
  gtk_widget_set_name(row(), name_.c_str());
  adw_preferences_row_set_use_underline(ADW_PREFERENCES_ROW(row_.get()), TRUE);
  setRowTitle(row_.get(), GTK_WIDGET(record_), title_);
  adw_action_row_set_subtitle_lines(row_.get(), 0);
  gtk_button_set_icon_name(clear_, "edit-clear-symbolic");
  gtk_widget_add_css_class(GTK_WIDGET(clear_), "flat");
  gtk_widget_set_tooltip_text(GTK_WIDGET(clear_), base::tr("Remove Shortcut"));
  setAccessibleLabel(GTK_WIDGET(clear_), base::tr("Remove Shortcut"));
  adw_action_row_add_suffix(row_.get(), GTK_WIDGET(record_));
  adw_action_row_add_suffix(row_.get(), GTK_WIDGET(clear_));
  adw_action_row_set_activatable_widget(row_.get(), GTK_WIDGET(record_));

  connections_.push_back(glib::connect<void(GtkButton*)>(
      record_, "clicked", [this](GtkButton*) { isRecording_ ? stop() : start(); }));
  connections_.push_back(glib::connect<void(GtkButton*)>(
      clear_, "clicked", [this](GtkButton*) { shortcuts_.set(name_, std::nullopt); }));
  auto* focus = gtk_event_controller_focus_new();
  connections_.push_back(glib::connect<void(GtkEventControllerFocus*)>(
      focus, "leave", [this](GtkEventControllerFocus*) { stop(); }));
  gtk_widget_add_controller(GTK_WIDGET(record_), focus);
  state_ = shortcuts_.state(name_).observe([this] { update(); });
  availability_ = shortcuts_.isAvailable().observe([this] { update(); });
  update();
}

ShortcutRecorder::~ShortcutRecorder() {
  stop();
}

void ShortcutRecorder::start() {
  auto* root = gtk_widget_get_root(row());
  if (!root)
    return;
  isRecording_ = true;
  hint_ = base::tr(recording);
  paused_ = shortcuts_.pause();
  gtk_widget_grab_focus(GTK_WIDGET(record_));
  // At the window, before its own keys and those of the application.
  keys_ = glib::share(gtk_event_controller_key_new());
  gtk_event_controller_set_propagation_phase(keys_.get(), GTK_PHASE_CAPTURE);
  using Pressed = gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType);
  pressed_ = glib::connect<Pressed>(
      keys_.get(), "key-pressed",
      [this](GtkEventControllerKey*, guint keyval, guint keycode, GdkModifierType state) -> gboolean {
        press(combinationOf(gtk_widget_get_display(row()), keyval, keycode, state));
        return TRUE;
      });
  gtk_widget_add_controller(GTK_WIDGET(root), GTK_EVENT_CONTROLLER(g_object_ref(keys_.get())));
  update();
}

void ShortcutRecorder::press(const std::optional<platform::KeyCombination>& keys) {
  if (!keys || !isRecording_)
    return;
  const bool alone = !keys->control && !keys->alt && !keys->super && !keys->shift;
  if (alone && (keys->key == "BackSpace" || keys->key == "Escape")) {
    if (keys->key == "BackSpace")
      shortcuts_.set(name_, std::nullopt);
    stop();
  } else if (shortcuts::mayBeReserved(*keys)) {
    shortcuts_.set(name_, keys);
    stop();
  } else {
    hint_ = base::tr(held);
    update();
  }
}

void ShortcutRecorder::stop() {
  if (!std::exchange(isRecording_, false))
    return;
  paused_.reset();
  pressed_ = {};
  if (auto* window = gtk_event_controller_get_widget(keys_.get()))
    gtk_widget_remove_controller(window, keys_.get());
  keys_ = nullptr;
  update();
}

void ShortcutRecorder::update() {
  const bool available = *shortcuts_.isAvailable();
  const auto& state = *shortcuts_.state(name_);
  const auto keys = !state.keys                  ? ""
                    : !state.desktopText.empty() ? state.desktopText
                                                 : shortcuts::displayText(*state.keys);
  // TRANSLATORS: on the button that waits for the keys of a shortcut, and that asks for them
  const auto shown = isRecording_   ? base::tr("Recording…")
                     : keys.empty() ? base::tr("Record Shortcut")
                                    : keys;
  gtk_button_set_label(record_, shown.c_str());
  wrapText(GTK_WIDGET(record_));
  // TRANSLATORS: read aloud, as "Toggle visibility: Ctrl+Alt+O"
  setAccessibleLabel(GTK_WIDGET(record_), base::trFormat("{0}: {1}", title_, shown));
  gtk_widget_set_visible(GTK_WIDGET(record_), available);
  gtk_widget_set_visible(GTK_WIDGET(clear_), available && state.keys.has_value() && !isRecording_);
  setRowSubtitle(row_.get(), !available              ? base::tr(unavailable)
                             : isRecording_          ? hint_
                             : state.problem.empty() ? base::tr(explanation)
                                                     : state.problem);
}

} // namespace ondrel::ui
