#pragma once

#include <string>
#include <string_view>

namespace ondrel::ui {

// One line of a text from outside, fit to be shown: nothing that hides, breaks or turns it around, and not so
// long that laying it out would take time. "…" stands where it was cut.
std::string shortDisplayLine(std::string_view text);

} // namespace ondrel::ui
