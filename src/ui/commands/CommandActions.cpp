#include "ui/commands/CommandActions.h"

#include "ui/commands/ActionName.h"

namespace ondrel::ui {

CommandActions::CommandActions(GtkApplication* application, const std::vector<CommandGroup>& groups)
    : application_(glib::share(application)) {
  for (const auto& group : groups)
    for (const auto& command : group.commands)
      add(command);
}

CommandActions::~CommandActions() {
  for (const auto& name : names_)
    g_action_map_remove_action(G_ACTION_MAP(application_.get()), name.c_str());
}

void CommandActions::add(const Command& command) {
  const auto name = actionName(command.title);
  const auto action = glib::adopt(
      command.checkedWhen ? g_simple_action_new_stateful(name.c_str(), nullptr, g_variant_new_boolean(FALSE))
                          : g_simple_action_new(name.c_str(), nullptr));
  // A switch changes its state when what it switches has changed, not before.
  connections_.push_back(glib::connect<void(GSimpleAction*, GVariant*)>(
      action.get(), "activate", [perform = command.perform](GSimpleAction*, GVariant*) { perform(); }));
  follow(command.enabledWhen, [action](bool enabled) { g_simple_action_set_enabled(action.get(), enabled); });
  if (command.checkedWhen)
    follow(*command.checkedWhen, [action](bool checked) {
      g_simple_action_set_state(action.get(), g_variant_new_boolean(checked));
    });

  g_action_map_add_action(G_ACTION_MAP(application_.get()), G_ACTION(action.get()));
  std::vector<const char*> accelerators;
  for (const auto& accelerator : command.accelerators)
    if (!command.pageFirst)
      accelerators.push_back(accelerator.c_str());
  accelerators.push_back(nullptr);
  gtk_application_set_accels_for_action(application_.get(), ("app." + name).c_str(), accelerators.data());
  names_.push_back(name);
}

void CommandActions::follow(const Condition& condition, std::function<void(bool)> tell) {
  tell(condition.now());
  if (condition.observe)
    subscriptions_.push_back(
        condition.observe([holds = condition.holds, tell = std::move(tell)] { tell(holds()); }));
}

} // namespace ondrel::ui
