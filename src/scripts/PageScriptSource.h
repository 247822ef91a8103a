#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::scripts {

// The text of a page script by its name ("titlePollScript"); nothing for a name that isn't shipped.
std::optional<std::string> pageScriptSource(std::string_view name);

} // namespace ondrel::scripts
