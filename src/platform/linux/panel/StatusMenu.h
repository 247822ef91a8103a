#pragma once

#include "platform/desktop/StatusItem.h"
#include "platform/linux/glib/Connection.h"

#include <libdbusmenu-glib/dbusmenu-glib.h>

#include <functional>
#include <memory>
#include <vector>

namespace ondrel::platform::panel {

// A menu that a panel shows for the program (com.canonical.dbusmenu), on the session bus for as long as it
// lives.
class StatusMenu {
 public:
  // `opening` is called when a panel is about to show it. When it has closed, most panels don't tell.
  StatusMenu(const char* path, std::function<void()> opening);

  void setRows(std::vector<StatusItem::Row> rows);

 private:
  struct Item {
    glib::Ref<DbusmenuMenuitem> item;
    std::function<void()> perform;
    glib::Connection activation;
  };
  void append();

  const glib::Ref<DbusmenuServer> server_;
  const glib::Ref<DbusmenuMenuitem> root_;
  const glib::Connection opening_;
  std::vector<std::unique_ptr<Item>> items_;
};

} // namespace ondrel::platform::panel
