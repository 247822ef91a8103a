#pragma once

#include "async/Timer.h"
#include "platform/linux/glib/Connection.h"

#include <adwaita.h>

#include <functional>
#include <string>

namespace ondrel::ui {

// Shows a command for the terminal, to be selected or copied by a button that says that it did.
class SetupCommandRow {
 public:
  SetupCommandRow(const std::string& caption, const std::string& copyLabel, std::function<void()> copy);

  GtkWidget* widget() const { return row_.get(); }
  void setCommand(const std::string& command);

 private:
  void showCopied();
  void showCopy();

  const std::string copyLabel_;
  const glib::Ref<GtkWidget> row_;
  GtkLabel* const command_;
  GtkWidget* const button_;
  AdwButtonContent* const content_;
  glib::Connection clicked_;
  async::Timer copied_;
};

} // namespace ondrel::ui
