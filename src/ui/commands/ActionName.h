#pragma once

#include <string>
#include <string_view>

namespace ondrel::ui {

// The name of a command's action, made of its title in kebab case: "Export as PDF…" is "export-as-pdf".
std::string actionName(std::string_view title);

} // namespace ondrel::ui
