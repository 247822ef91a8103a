#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ondrel::scripts {

// Reads a text out of the program's resources by its path; nothing if there is none.
using ResourceReader = std::function<std::optional<std::string>(const std::string& path)>;

// What gives the text of a page script by its name ("titlePollScript"); nothing for a name that isn't
// shipped.
inline auto pageScriptSource(ResourceReader read) {
  return [read = std::move(read)](std::string_view name) {
    return read("/org/velmora/Ondrel/scripts/" + std::string(name) + ".js");
  };
}

} // namespace ondrel::scripts
