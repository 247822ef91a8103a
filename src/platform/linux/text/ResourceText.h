#pragma once

#include <optional>
#include <string>

namespace ondrel::platform::text {

// A text that is compiled into the program as a GResource, by its path; nothing if there is none.
std::optional<std::string> resourceText(const std::string& path);

} // namespace ondrel::platform::text
