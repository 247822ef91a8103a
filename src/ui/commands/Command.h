#pragma once

#include "base/Event.h"
#include "base/Observable.h"
#include "base/Translation.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::ui {

// A fact that menus follow. Without `holds` it is always true.
struct Condition {
  std::function<bool()> holds{};
  // Calls back whenever the fact may have changed.
  std::function<base::Subscription(std::function<void()>)> observe{};

  bool now() const { return !holds || holds(); }
};

// The observable outlives the condition.
inline Condition whenTrue(const base::Observable<bool>& flag) {
  return {[&flag] { return *flag; }, [&flag](auto changed) { return flag.observe(std::move(changed)); }};
}

template <class T>
Condition whenSet(const base::Observable<std::optional<T>>& value) {
  return {[&value] { return value->has_value(); },
          [&value](auto changed) { return value.observe(std::move(changed)); }};
}

// How a command shows in the primary menu; a button, in the row that each window makes for its group.
enum class MenuPlace { none, item, button };

// One command of the program: a row of the table that actions, keys, the menu and the window of shortcuts are
// made of.
struct Command {
  std::string title;   // English, marked for translation; the name of the action is made of it
  std::string shown{}; // in the user's language, of a title that is made with a name; else empty
  std::vector<std::string> accelerators{}; // in the toolkit's form; the first one is shown
  std::function<void()> perform{};
  Condition enabledWhen{};
  std::optional<Condition> checkedWhen{}; // of a switch: whether it is on
  std::function<std::string()> help{};    // why it can't be used at present; empty text: nothing to say
  MenuPlace place = MenuPlace::item;
  bool startsSection = false; // in its submenu
  bool pageFirst = false;     // the page in front gets these keys first, the command those that it leaves
};

// The title in the user's language.
inline std::string shownTitle(const Command& command) {
  return command.shown.empty() ? base::tr(command.title.c_str()) : command.shown;
}

// A section of the menu. The window of shortcuts has one for each title.
struct CommandGroup {
  std::string title; // as that of a command
  std::vector<Command> commands;
  bool isSubmenu = false; // shows behind a row of its title
};

} // namespace ondrel::ui
