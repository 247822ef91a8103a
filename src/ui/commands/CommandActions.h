#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/commands/Command.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::ui {

// Makes each command an action of the application under actionName(title), with its keys. The keys come
// before the page, since the toolkit looks for them on the way down to the widget that has the keyboard;
// those that shall come behind it are left to PageKeys.
//
// Any process of the session can call these actions over D-Bus, so none of them takes a parameter.
class CommandActions {
 public:
  // `groups` outlives the actions.
  CommandActions(GtkApplication* application, const std::vector<CommandGroup>& groups);
  ~CommandActions();
  CommandActions(const CommandActions&) = delete;
  CommandActions& operator=(const CommandActions&) = delete;

 private:
  void add(const Command& command);
  // Keeps the action in line with the condition, from now on.
  void follow(const Condition& condition, std::function<void(bool)> tell);

  glib::Ref<GtkApplication> application_;
  std::vector<std::string> names_;
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
