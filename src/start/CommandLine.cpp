#include "start/CommandLine.h"

#include "base/Translation.h"

#include <algorithm>
#include <iterator>

namespace ondrel::start {

const char* const usage = base::trMark(R"(Usage: ondrel [OPTION] [URL...]

Opens the mail service in native windows, or brings those of the running program to
the front. A URL goes to the running program, if there is one: mailto:... begins a
letter, email://... shows a message.

  --background     watch for mail without a window, until one is wanted
  --demo[=FOLDER]  run on the demonstration service, with a throw-away profile or
                   the one kept in FOLDER
  --new-window, --new-message, --highlights, --show-attached-files
                   do this in the running program, or start it for it
  --gapplication-service
                   wait for what the session bus has started the program for
  --toggle         hide the running program, or show it again; start it when there is
                   none
  --version        print name, version and build
  --help           print this text

Environment:
  ONDREL_SITE       another file with the service's addresses than the installed one
  ONDREL_LOG        debug or info: say more on standard error
  ONDREL_RENDERING  software or hardware: don't find out, use this
)");

namespace {
constexpr std::string_view demoWithFolder = "--demo=";
// Each is the name of an action behind two dashes. The desktop file has them too.
constexpr std::string_view commands[] = {"--new-window", "--new-message", "--highlights",
                                         "--show-attached-files"};
} // namespace

std::vector<std::string> CommandLine::restartArguments() const {
  if (demoProfile)
    return {std::string(demoWithFolder) + *demoProfile};
  return demo ? std::vector<std::string>{"--demo"} : std::vector<std::string>();
}

std::expected<CommandLine, std::string> CommandLine::parse(const std::vector<std::string>& arguments) {
  CommandLine result;
  bool optionsEnded = false;
  for (const auto& argument : arguments) {
    if (optionsEnded || !argument.starts_with('-')) {
      result.urls.push_back(argument);
    } else if (argument == "--") {
      optionsEnded = true;
    } else if (argument == "--version") {
      result.action = Action::printVersion;
    } else if (argument == "--help" || argument == "-h") {
      result.action = Action::printHelp;
    } else if (argument == "--gapplication-service") {
      result.startedByBus = true;
    } else if (argument == "--background") {
      result.background = true;
    } else if (argument == "--toggle") {
      result.toggle = true;
    } else if (std::ranges::find(commands, argument) != std::end(commands)) {
      result.command = argument.substr(2);
    } else if (argument == "--demo") {
      result.demo = true;
    } else if (argument.starts_with(demoWithFolder) && argument.size() > demoWithFolder.size()) {
      result.demo = true;
      result.demoProfile = argument.substr(demoWithFolder.size());
    } else {
      return std::unexpected(base::trFormat("unknown option \"{}\"; --help tells what there is", argument));
    }
  }
  return result;
}

} // namespace ondrel::start
