#pragma once

#include <string>
#include <string_view>

namespace ondrel::platform::packages {

// The text of an update as a few lines that are safe to show as text. Of a Debian changelog, each version's
// name stands alone on its line, and who signed it is left out.
std::string updateNotes(std::string_view text);

} // namespace ondrel::platform::packages
