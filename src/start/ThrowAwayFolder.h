#pragma once

#include <string>

namespace ondrel::start {

// Removes a folder of this process alone, at its very end: what child processes are left (the engine's, which
// outlive their views) is ended before, since they would write into it again.
void removeThrowAwayFolder(const std::string& folder);

} // namespace ondrel::start
