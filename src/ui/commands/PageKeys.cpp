#include "ui/commands/PageKeys.h"

#include "ui/commands/ActionName.h"

namespace ondrel::ui {

void addPageKeys(GtkWidget* topLevel, const std::vector<CommandGroup>& groups) {
  auto* controller = GTK_SHORTCUT_CONTROLLER(gtk_shortcut_controller_new());
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(controller), GTK_PHASE_BUBBLE);
  for (const auto& group : groups)
    for (const auto& command : group.commands) {
      if (!command.pageFirst)
        continue;
      // A command that can't be used now lets its key pass.
      for (const auto& accelerator : command.accelerators)
        gtk_shortcut_controller_add_shortcut(
            controller, gtk_shortcut_new(gtk_shortcut_trigger_parse_string(accelerator.c_str()),
                                         gtk_named_action_new(("app." + actionName(command.title)).c_str())));
    }
  gtk_widget_add_controller(topLevel, GTK_EVENT_CONTROLLER(controller));
}

} // namespace ondrel::ui
