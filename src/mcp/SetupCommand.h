#pragma once

#include <cstdint>
#include <string>

namespace ondrel::mcp {

// One line for a POSIX shell that enters the server in Claude Code's configuration file, as
// ClaudeConfig::registerServer does. Needs Python 3 and leaves the file alone when it can't be kept.
std::string setupCommand(std::int64_t port);

} // namespace ondrel::mcp
