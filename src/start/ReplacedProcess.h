#pragma once

#include <string>
#include <vector>

namespace ondrel::start {

// Goes on as another program in this same process, so that whoever started it still knows it. Comes back only
// when that fails, with a line for the log.
std::string becomeProgram(const std::string& path, const std::vector<std::string>& arguments);

} // namespace ondrel::start
