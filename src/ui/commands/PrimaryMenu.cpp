#include "ui/commands/PrimaryMenu.h"

#include "base/Translation.h"
#include "ui/commands/ActionName.h"

namespace ondrel::ui {

namespace {

glib::Ref<GMenuItem> menuItem(const Command& command) {
  auto item =
      glib::adopt(g_menu_item_new(shownTitle(command).c_str(), ("app." + actionName(command.title)).c_str()));
  // The toolkit shows only those keys by itself that it looks for.
  if (command.pageFirst && !command.accelerators.empty())
    g_menu_item_set_attribute(item.get(), "accel", "s", command.accelerators.front().c_str());
  return item;
}

glib::Ref<GMenuItem> rowOfButtons(const std::string& title) {
  auto item = glib::adopt(g_menu_item_new(nullptr, nullptr));
  g_menu_item_set_attribute(item.get(), "custom", "s", title.c_str());
  return item;
}

// A section, or one row that leads to it.
glib::Ref<GMenuItem> section(const CommandGroup& group) {
  const auto menu = glib::adopt(g_menu_new());
  auto rows = menu;
  bool ofButtons = false;
  for (const auto& command : group.commands) {
    if (command.place == MenuPlace::none)
      continue;
    if (command.place != MenuPlace::item) {
      ofButtons = true;
      continue;
    }
    if (command.startsSection) {
      rows = glib::adopt(g_menu_new());
      g_menu_append_section(menu.get(), nullptr, G_MENU_MODEL(rows.get()));
    }
    g_menu_append_item(rows.get(), menuItem(command).get());
  }
  if (ofButtons)
    g_menu_append_item(menu.get(), rowOfButtons(group.title).get());
  if (g_menu_model_get_n_items(G_MENU_MODEL(menu.get())) == 0)
    return nullptr;
  if (group.isSubmenu) {
    const auto row = glib::adopt(g_menu_new());
    g_menu_append_submenu(row.get(), base::tr(group.title.c_str()), G_MENU_MODEL(menu.get()));
    return glib::adopt(g_menu_item_new_section(nullptr, G_MENU_MODEL(row.get())));
  }
  return glib::adopt(g_menu_item_new_section(nullptr, G_MENU_MODEL(menu.get())));
}

// The toolkit's menu button, a type without a public name, tells its title as "text".
std::string menuText(GtkWidget* widget) {
  if (!g_object_class_find_property(G_OBJECT_GET_CLASS(widget), "text"))
    return {};
  char* text = nullptr;
  g_object_get(widget, "text", &text, nullptr);
  const glib::CString owned(text);
  return text ? text : "";
}

void setHelp(GtkWidget* widget, const std::string& title, const std::string& help) {
  if (menuText(widget) == title) {
    gtk_widget_set_tooltip_text(widget, help.empty() ? nullptr : help.c_str());
    return;
  }
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    setHelp(child, title, help);
}

} // namespace

PrimaryMenu::PrimaryMenu(const std::vector<CommandGroup>& groups)
    : groups_(groups), menu_(glib::adopt(g_menu_new())) {
  for (const auto& group : groups)
    if (const auto item = section(group))
      g_menu_append_item(menu_.get(), item.get());
}

void PrimaryMenu::explain(GtkWidget* popover) const {
  for (const auto& group : groups_)
    for (const auto& command : group.commands)
      if (command.help)
        setHelp(popover, shownTitle(command), command.help());
}

} // namespace ondrel::ui
