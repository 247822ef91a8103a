#include "ui/commands/ShortcutsWindow.h"

#include "platform/linux/glib/Ref.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace ondrel::ui {

namespace {

struct Shortcut {
  std::string title;
  std::string accelerators;
};

constexpr std::string_view tabsTitle = "Tabs";

// The keys that the windows themselves answer.
const std::array tabShortcuts = {Shortcut{"Go to Tab 1 to 8", "<Control>1...8 <Alt>1...8"},
                                 Shortcut{"Go to Last Tab", "<Control>9 <Alt>9"}};

std::string escaped(const std::string& text) {
  return glib::CString(g_markup_escape_text(text.c_str(), -1)).get();
}

std::string property(const char* name, const std::string& value) {
  return std::string("<property name=\"") + name + "\">" + escaped(value) + "</property>";
}

std::string object(const char* type, const std::string& content) {
  return std::string("<child><object class=\"") + type + "\">" + content + "</object></child>";
}

std::string groupMarkup(const std::string& title, const std::vector<Shortcut>& shortcuts) {
  std::string rows;
  for (const auto& shortcut : shortcuts)
    rows += object("GtkShortcutsShortcut",
                   property("title", shortcut.title) + property("accelerator", shortcut.accelerators));
  return rows.empty() ? rows : object("GtkShortcutsGroup", property("title", title) + rows);
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
        found->second.push_back({command.title, command.accelerators.front()});
    if (group.title == tabsTitle)
      std::ranges::copy(tabShortcuts, std::back_inserter(found->second));
  }
  return result;
}

} // namespace

GtkWindow* presentShortcuts(const std::vector<CommandGroup>& groups, GtkWindow* parent) {
  std::string content;
  for (const auto& [title, shortcuts] : byTitle(groups))
    content += groupMarkup(title, shortcuts);
  const auto markup = "<interface><object class=\"GtkShortcutsWindow\" id=\"shortcuts\"><property "
                      "name=\"modal\">1</property>" +
                      object("GtkShortcutsSection",
                             property("section-name", "shortcuts") + property("max-height", "14") + content) +
                      "</object></interface>";
  const auto builder =
      glib::adopt(gtk_builder_new_from_string(markup.c_str(), static_cast<gssize>(markup.size())));
  auto* window = GTK_WINDOW(gtk_builder_get_object(builder.get(), "shortcuts"));
  gtk_window_set_transient_for(window, parent);
  gtk_window_set_destroy_with_parent(window, TRUE);
  gtk_window_present(window);
  return window;
}

} // namespace ondrel::ui
