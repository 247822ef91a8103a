#pragma once

#include "platform/linux/glib/Ref.h"
#include "ui/commands/Command.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::ui {

// The menu of the program's commands, for the menu button of a window.
class PrimaryMenu {
 public:
  // `groups` outlives the menu.
  explicit PrimaryMenu(const std::vector<CommandGroup>& groups);

  // A group of buttons has one place, for a child of the group's title that the window adds to its popover.
  GMenuModel* model() const { return G_MENU_MODEL(menu_.get()); }
  // Puts the help texts, as they are now, on the items of a menu that is about to show. The toolkit's menu
  // models have no place for them.
  void explain(GtkWidget* popover) const;

 private:
  const std::vector<CommandGroup>& groups_;
  glib::Ref<GMenu> menu_;
};

} // namespace ondrel::ui
