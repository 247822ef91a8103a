#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::demo::files {

// The bytes of a file that was compiled in, by its path below demo/ ("webapp/main.js").
std::optional<std::string> resource(const std::string& path);
// The type to send for a file name of the web application.
const char* contentTypeOf(std::string_view fileName);

} // namespace ondrel::demo::files
