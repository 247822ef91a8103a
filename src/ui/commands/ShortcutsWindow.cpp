#include "ui/commands/ShortcutsWindow.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "platform/linux/glib/Connection.h"
#include "ui/widgets/SideOrBelow.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace ondrel::ui {

namespace {

constexpr int width = 520;
constexpr int height = 640; // fits a screen of 768 pixels, with a panel and a title bar
constexpr int spacing = 6;
constexpr int margin = 8;

struct Shortcut {
  std::string title;
  std::string accelerators;
};

constexpr std::string_view tabsTitle = "Tabs";

// The keys that the windows themselves answer.
const std::array tabShortcuts = {Shortcut{base::trMark("Go to Tab 1 to 8"), "<Control>1...8 <Alt>1...8"},
                                 Shortcut{base::trMark("Go to Last Tab"), "<Control>9 <Alt>9"}};

// A row says what it is for, and then its keys.
std::string keysText(GtkWidget* widget) {
  std::string text = GTK_IS_LABEL(widget) ? gtk_label_get_text(GTK_LABEL(widget)) : "";
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    text += keysText(child);
  return text;
}

GtkWidget* makeRow(const Shortcut& shortcut) {
  auto* keys = gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing);
  gtk_widget_add_css_class(keys, "shortcut-keys");
  gtk_widget_set_valign(keys, GTK_ALIGN_CENTER);
  std::string spoken;
  std::istringstream each(shortcut.accelerators);
  for (std::string accelerator; each >> accelerator;) {
    auto* label = gtk_shortcut_label_new(accelerator.c_str());
    gtk_widget_set_direction(label, GTK_TEXT_DIR_LTR);
    gtk_box_append(GTK_BOX(keys), label);
    spoken += (spoken.empty() ? "" : ", ") + keysText(label);
  }
  auto* content = sideOrBelow(wrappedLabel(shortcut.title.c_str()), keys);
  for (const auto set : {gtk_widget_set_margin_start, gtk_widget_set_margin_end, gtk_widget_set_margin_top,
                         gtk_widget_set_margin_bottom})
    set(content, margin);
  auto* row = adw_preferences_row_new();
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), base::escapedMarkup(shortcut.title).c_str());
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), FALSE);
  gtk_list_box_row_set_child(GTK_LIST_BOX_ROW(row), content);
  setAccessibleLabel(row, shortcut.title);
  setAccessibleDescription(row, spoken);
  return row;
}

// In the order of the groups, those of one title together.
std::vector<std::pair<std::string, std::vector<Shortcut>>> byTitle(const std::vector<CommandGroup>& groups) {
  std::vector<std::pair<std::string, std::vector<Shortcut>>> result;
  for (const auto& group : groups) {
    auto found = std::ranges::find(result, group.title, [](const auto& each) { return each.first; });
    if (found == result.end())
      found = result.insert(found, {group.title, {}});
    for (const auto& command : group.commands)
      if (!command.accelerators.empty())
        found->second.push_back({shownTitle(command), command.accelerators.front()});
    if (group.title == tabsTitle)
      for (const auto& [title, accelerators] : tabShortcuts)
        found->second.push_back({base::tr(title.c_str()), accelerators});
  }
  return result;
}

// The window's content. Its widgets are the window's.
class Shortcuts {
 public:
  Shortcuts(GtkWindow* window, const std::vector<CommandGroup>& groups);

 private:
  struct Group {
    GtkWidget* widget;
    std::vector<std::pair<std::string, GtkWidget*>> rows; // and what they say
  };
  GtkWidget* makePage(const std::vector<CommandGroup>& groups);
  GtkWidget* makeSearchBar(GtkWidget* button);
  void addKeys(GtkWindow* window);
  void search(const char* text);

  std::vector<Group> groups_;
  GtkWidget* searchBar_ = nullptr;
  GtkWidget* stack_;
  std::vector<glib::Connection> connections_;
};

Shortcuts::Shortcuts(GtkWindow* window, const std::vector<CommandGroup>& groups) : stack_(gtk_stack_new()) {
  auto* none = adw_status_page_new();
  adw_status_page_set_icon_name(ADW_STATUS_PAGE(none), "edit-find-symbolic");
  adw_status_page_set_title(ADW_STATUS_PAGE(none), base::tr("No Matches"));
  gtk_stack_add_named(GTK_STACK(stack_), makePage(groups), "shortcuts");
  gtk_stack_add_named(GTK_STACK(stack_), none, "none");
  gtk_widget_set_vexpand(stack_, TRUE);

  auto* button = gtk_toggle_button_new();
  gtk_button_set_icon_name(GTK_BUTTON(button), "edit-find-symbolic");
  setAccessibleLabel(button, base::tr("Search"));
  setTooltip(button, base::tr("Search") + std::string(" (⌘F)"));
  auto* bar = adw_header_bar_new();
  adw_header_bar_pack_start(ADW_HEADER_BAR(bar), button);
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  for (auto* part : {bar, makeSearchBar(button), stack_})
    gtk_box_append(GTK_BOX(box), part);
  adw_window_set_content(ADW_WINDOW(window), box);
  addKeys(window);
}

GtkWidget* Shortcuts::makePage(const std::vector<CommandGroup>& groups) {
  auto* page = adw_preferences_page_new();
  for (const auto& [title, shortcuts] : byTitle(groups)) {
    if (shortcuts.empty())
      continue;
    auto& group = groups_.emplace_back(Group{adw_preferences_group_new(), {}});
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(group.widget),
                                    base::escapedMarkup(base::tr(title.c_str())).c_str());
    wrapText(group.widget);
    for (const auto& shortcut : shortcuts) {
      group.rows.emplace_back(shortcut.title, makeRow(shortcut));
      adw_preferences_group_add(ADW_PREFERENCES_GROUP(group.widget), group.rows.back().second);
    }
    adw_preferences_page_add(ADW_PREFERENCES_PAGE(page), ADW_PREFERENCES_GROUP(group.widget));
  }
  return page;
}

GtkWidget* Shortcuts::makeSearchBar(GtkWidget* button) {
  auto* entry = gtk_search_entry_new();
  gtk_widget_set_name(entry, "shortcuts-search");
  gtk_widget_set_hexpand(entry, TRUE);
  setAccessibleLabel(entry, base::tr("Search"));
  connections_.push_back(
      glib::connect<void(GtkSearchEntry*)>(entry, "search-changed", [this](GtkSearchEntry* from) {
        search(gtk_editable_get_text(GTK_EDITABLE(from)));
      }));
  searchBar_ = gtk_search_bar_new();
  gtk_search_bar_set_child(GTK_SEARCH_BAR(searchBar_), entry);
  gtk_search_bar_connect_entry(GTK_SEARCH_BAR(searchBar_), GTK_EDITABLE(entry));
  g_object_bind_property(searchBar_, "search-mode-enabled", button, "active",
                         static_cast<GBindingFlags>(G_BINDING_BIDIRECTIONAL | G_BINDING_SYNC_CREATE));
  return searchBar_;
}

void Shortcuts::addKeys(GtkWindow* window) {
  auto* keys = gtk_event_controller_key_new();
  connections_.push_back(glib::connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
      keys, "key-pressed",
      [this, window](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
        const auto held = modifiers & gtk_accelerator_get_default_mod_mask();
        auto* bar = GTK_SEARCH_BAR(searchBar_);
        if (key == GDK_KEY_f && held == GDK_CONTROL_MASK) {
          gtk_search_bar_set_search_mode(bar, TRUE);
          giveFocus(gtk_search_bar_get_child(bar));
        } else if (key == GDK_KEY_Escape && held == 0 && gtk_search_bar_get_search_mode(bar)) {
          gtk_search_bar_set_search_mode(bar, FALSE);
        } else if ((key == GDK_KEY_Escape && held == 0) || (key == GDK_KEY_w && held == GDK_CONTROL_MASK)) {
          gtk_window_close(window);
        } else {
          return FALSE;
        }
        return TRUE;
      }));
  // Before the application's own keys: those would look for a tab.
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  gtk_widget_add_controller(GTK_WIDGET(window), keys);
}

void Shortcuts::search(const char* text) {
  bool isFound = false;
  for (const auto& group : groups_) {
    bool hasRows = false;
    for (const auto& [title, row] : group.rows) {
      const bool matches = !*text || g_str_match_string(text, title.c_str(), TRUE);
      gtk_widget_set_visible(row, matches);
      hasRows = hasRows || matches;
    }
    gtk_widget_set_visible(group.widget, hasRows);
    isFound = isFound || hasRows;
  }
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), isFound ? "shortcuts" : "none");
}

} // namespace

GtkWindow* presentShortcuts(const std::vector<CommandGroup>& groups, GtkWindow* parent) {
  auto* window = GTK_WINDOW(adw_window_new());
  gtk_window_set_title(window, base::tr("Keyboard Shortcuts"));
  gtk_window_set_default_size(window, width, height);
  gtk_window_set_modal(window, TRUE);
  gtk_window_set_transient_for(window, parent);
  gtk_window_set_destroy_with_parent(window, TRUE);
  auto* shortcuts = new Shortcuts(window, groups);
  g_object_set_data_full(G_OBJECT(window), "ondrel-shortcuts", shortcuts,
                         [](gpointer data) { delete static_cast<Shortcuts*>(data); });
  gtk_window_present(window);
  return window;
}

} // namespace ondrel::ui
