#pragma once

#include "scripts/PageTexts.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ondrel::scripts {

// Reads a text out of the program's resources by its path; nothing if there is none.
using ResourceReader = std::function<std::optional<std::string>(const std::string& path)>;

// Whether pages pass what they write to their console on to the program's log. Each line wakes the program.
enum class ConsoleRelay { wanted, unwanted };

// What gives the text of a page script by its name ("titlePollScript"); nothing for a name that isn't
// shipped, or not wanted.
inline auto pageScriptSource(ResourceReader read, ConsoleRelay relay) {
  return [read = std::move(read), relay](std::string_view name) {
    if (relay == ConsoleRelay::unwanted && name == "consoleRelayScript")
      return std::optional<std::string>();
    return read("/org/velmora/Ondrel/scripts/" + std::string(name) + ".js").transform(withPageTexts);
  };
}

} // namespace ondrel::scripts
