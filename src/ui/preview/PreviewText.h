#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::ui {

// The text of a file in UTF-8: what its byte order mark says, UTF-8 where it is that, else the encoding that
// its bytes make likely. `isCut` is for the beginning of a longer file, which may end within a character.
// Absent for what is no text. Lines of more than 4000 bytes are broken, since the toolkit can't lay them out
// in reasonable time.
std::optional<std::string> previewText(std::string_view bytes, bool isCut);

} // namespace ondrel::ui
