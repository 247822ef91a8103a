#pragma once

#include <string>
#include <string_view>

namespace ondrel::integrations {

inline constexpr std::string_view contactSubject = "Ondrel";
inline constexpr std::string_view bugReportSubject = "Bug report / wish for Ondrel";

// A link that begins a letter to the project.
std::string supportMailURL(std::string_view address, std::string_view subject);

} // namespace ondrel::integrations
