#include "ui/page/FindBar.h"

#include "base/Translation.h"
#include "platform/PageFinder.h"
#include "ui/widgets/SideOrBelow.h"
#include "ui/widgets/Widgets.h"
#include "web/page/PageSearch.h"

#include <string>
#include <utility>

namespace ondrel::ui {

using web::PageSearch;

namespace {

using Outcome = PageSearch::State::Outcome;

// Enough to see a word; the entry takes what room there is.
constexpr int entryCharacters = 30;

// Which of them the selected one is, the engine doesn't tell.
std::string countText(const PageSearch::State& state) {
  if (state.outcome == Outcome::notFound)
    return base::tr("No matches");
  if (state.outcome != Outcome::found)
    return "";
  if (state.matches > platform::PageFinder::mostCounted)
    return base::trFormat("Over {} matches", platform::PageFinder::mostCounted);
  return base::trPlural("{} match", "{} matches", state.matches, state.matches);
}

// Read aloud when its text changes.
GtkWidget* statusLabel() {
  auto* label = GTK_WIDGET(g_object_new(GTK_TYPE_LABEL, "accessible-role", GTK_ACCESSIBLE_ROLE_STATUS, "name",
                                        "find-count", nullptr));
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_widget_add_css_class(label, "dim-label");
  gtk_widget_add_css_class(label, "numeric");
  return label;
}

} // namespace

FindBar::FindBar(PageSearch& search, std::function<void()> closed)
    : search_(search), closed_(std::move(closed)), bar_(glib::share(gtk_search_bar_new())),
      entry_(gtk_search_entry_new()), count_(statusLabel()) {
  previous_ =
      button("find-previous", "go-up-symbolic", base::tr("Find Previous"), "⌘⇧G", &PageSearch::previous);
  next_ = button("find-next", "go-down-symbolic", base::tr("Find Next"), "⌘G", &PageSearch::next);
  gtk_widget_set_name(bar_.get(), "find-bar");
  gtk_widget_set_name(entry_, "find-entry");
  gtk_widget_set_hexpand(entry_, TRUE);
  gtk_editable_set_width_chars(GTK_EDITABLE(entry_), 1);
  gtk_editable_set_max_width_chars(GTK_EDITABLE(entry_), entryCharacters);
  setPlaceholder(entry_, base::tr("Find in page"));
  setAccessibleLabel(entry_, base::tr("Find in page"));

  auto* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  for (auto* widget : {entry_, previous_, next_})
    gtk_box_append(GTK_BOX(row), widget);
  gtk_search_bar_set_child(GTK_SEARCH_BAR(bar_.get()), sideOrBelow(row, count_));
  gtk_search_bar_set_show_close_button(GTK_SEARCH_BAR(bar_.get()), TRUE);
  connectEntry();
  addKeys();
  subscriptions_.push_back(search_.state.observe([this] { update(); }));
  subscriptions_.push_back(search_.asked.subscribe([this] { takeKeyboard(); }));
  update();
}

GtkWidget* FindBar::button(const char* name, const char* icon, const char* label, const char* keys,
                           void (PageSearch::*step)()) {
  auto* made = toolbarButton(name, icon, label, std::string(label) + " " + keys);
  gtk_widget_add_css_class(made, "flat");
  on(made, "clicked", [this, step] { (search_.*step)(); });
  return made;
}

void FindBar::on(gpointer object, const char* signal, std::function<void()> handler) {
  connections_.push_back(glib::connect<void(GObject*)>(
      G_OBJECT(object), signal, [handler = std::move(handler)](GObject*) { handler(); }));
}

void FindBar::connectEntry() {
  on(entry_, "changed", [this] {
    if (!isUpdating_)
      search_.setText(gtk_editable_get_text(GTK_EDITABLE(entry_)));
  });
  on(entry_, "activate", [this] { search_.next(); });
  on(entry_, "next-match", [this] { search_.next(); });
  on(entry_, "previous-match", [this] { search_.previous(); });
  // By Escape, and by the button.
  connections_.push_back(glib::onNotify(bar_.get(), "search-mode-enabled", [this] {
    if (isUpdating_ || gtk_search_bar_get_search_mode(GTK_SEARCH_BAR(bar_.get())))
      return;
    search_.close();
    closed_();
  }));
}

void FindBar::addKeys() {
  auto* keys = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  using Pressed = gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType);
  connections_.push_back(glib::connect<Pressed>(
      keys, "key-pressed",
      [this](GtkEventControllerKey*, guint key, guint, GdkModifierType state) -> gboolean {
        const bool isEnter = key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter;
        if (key == GDK_KEY_Escape)
          gtk_search_bar_set_search_mode(GTK_SEARCH_BAR(bar_.get()), FALSE);
        else if (isEnter && (state & GDK_SHIFT_MASK) &&
                 (gtk_widget_get_state_flags(entry_) & GTK_STATE_FLAG_FOCUS_WITHIN))
          search_.previous();
        else
          return FALSE;
        return TRUE;
      }));
  gtk_widget_add_controller(bar_.get(), keys);
}

void FindBar::takeKeyboard() {
  giveFocus(entry_);
  gtk_editable_select_region(GTK_EDITABLE(entry_), 0, -1);
}

void FindBar::update() {
  const auto& state = *search_.state;
  isUpdating_ = true;
  gtk_search_bar_set_search_mode(GTK_SEARCH_BAR(bar_.get()), state.isOpen);
  if (gtk_editable_get_text(GTK_EDITABLE(entry_)) != state.text) {
    gtk_editable_set_text(GTK_EDITABLE(entry_), state.text.c_str());
    gtk_editable_select_region(GTK_EDITABLE(entry_), 0, -1);
  }
  isUpdating_ = false;
  const bool canStep = !state.text.empty() && state.outcome != Outcome::notFound;
  gtk_widget_set_sensitive(previous_, canStep);
  gtk_widget_set_sensitive(next_, canStep);
  tell(countText(state).c_str(), state.outcome == Outcome::notFound);
}

void FindBar::tell(const char* text, bool isError) {
  gtk_label_set_text(GTK_LABEL(count_), text);
  gtk_accessible_update_property(GTK_ACCESSIBLE(entry_), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, text, -1);
  gtk_accessible_update_state(GTK_ACCESSIBLE(entry_), GTK_ACCESSIBLE_STATE_INVALID,
                              isError ? GTK_ACCESSIBLE_INVALID_TRUE : GTK_ACCESSIBLE_INVALID_FALSE, -1);
  (isError ? gtk_widget_add_css_class : gtk_widget_remove_css_class)(entry_, "error");
}

} // namespace ondrel::ui
