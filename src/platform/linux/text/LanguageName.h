#pragma once

#include <string>

namespace ondrel::platform::text {

// What the user calls a language: "German (Austria)" for "de_AT". The tag itself where nobody knows it.
std::string languageName(const std::string& tag);

} // namespace ondrel::platform::text
