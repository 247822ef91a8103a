#include "platform/linux/panel/StatusMenu.h"

#include <utility>

namespace ondrel::platform::panel {

namespace {

// An underline marks a mnemonic.
std::string label(const std::string& title) {
  std::string result;
  for (const char c : title)
    result.append(c == '_' ? 2 : 1, c);
  return result;
}

// A list with one combination of keys.
GVariant* shortcut(const std::vector<std::string>& keys) {
  GVariantBuilder combination;
  g_variant_builder_init(&combination, G_VARIANT_TYPE_STRING_ARRAY);
  for (const auto& key : keys)
    g_variant_builder_add(&combination, "s", key.c_str());
  auto* one = g_variant_builder_end(&combination);
  return g_variant_new_array(G_VARIANT_TYPE_STRING_ARRAY, &one, 1);
}

} // namespace

StatusMenu::StatusMenu(const char* path, std::function<void()> opening)
    : server_(glib::adopt(dbusmenu_server_new(path))), root_(glib::adopt(dbusmenu_menuitem_new())),
      opening_(glib::connect<gboolean(DbusmenuMenuitem*)>(
          root_.get(), DBUSMENU_MENUITEM_SIGNAL_ABOUT_TO_SHOW,
          [opening = std::move(opening)](DbusmenuMenuitem*) -> gboolean {
            opening();
            return FALSE; // its rows are what they were
          })) {
  dbusmenu_server_set_root(server_.get(), root_.get());
}

// Rows that stay keep their items: a panel that shows the menu right now would lose what the user points at.
void StatusMenu::setRows(std::vector<StatusItem::Row> rows) {
  while (items_.size() > rows.size()) {
    dbusmenu_menuitem_child_delete(root_.get(), items_.back()->item.get());
    items_.pop_back();
  }
  while (items_.size() < rows.size())
    append();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    auto* item = items_[i]->item.get();
    items_[i]->perform = std::move(rows[i].perform);
    dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_LABEL, label(rows[i].title).c_str());
    if (!rows[i].iconName.empty())
      dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_ICON_NAME, rows[i].iconName.c_str());
    else
      dbusmenu_menuitem_property_remove(item, DBUSMENU_MENUITEM_PROP_ICON_NAME);
    if (!rows[i].keys.empty())
      dbusmenu_menuitem_property_set_variant(item, DBUSMENU_MENUITEM_PROP_SHORTCUT, shortcut(rows[i].keys));
    else
      dbusmenu_menuitem_property_remove(item, DBUSMENU_MENUITEM_PROP_SHORTCUT);
  }
}

void StatusMenu::append() {
  auto& added = items_.emplace_back(std::make_unique<Item>());
  added->item = glib::adopt(dbusmenu_menuitem_new());
  added->activation = glib::connect<void(DbusmenuMenuitem*, guint)>(
      added->item.get(), DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
      [item = added.get()](DbusmenuMenuitem*, guint) {
        const auto perform = item->perform; // which may set other rows
        perform();
      });
  dbusmenu_menuitem_child_append(root_.get(), added->item.get());
}

} // namespace ondrel::platform::panel
