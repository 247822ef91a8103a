#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::start {

struct CommandLine {
  enum class Action { run, printVersion, printHelp };
  Action action = Action::run;
  bool demo = false;
  bool startedByBus = false;              // as a D-Bus service: what it is started for comes as a message
  bool background = false;                // mail is watched, and no window comes until one is wanted
  bool toggle = false;                    // hide the running program or show it
  std::string command;                    // the name of an application action to perform; may be empty
  std::optional<std::string> demoProfile; // a folder that is kept; none for a throw-away one
  std::vector<std::string> urls;          // as given, any bytes

  // The arguments without the program's name. The error is one line for standard error.
  static std::expected<CommandLine, std::string> parse(const std::vector<std::string>& arguments);
  // Those with which the program goes on after a restart, with its windows.
  std::vector<std::string> restartArguments() const;
};

extern const char* const usage; // shown by base::tr()

} // namespace ondrel::start
