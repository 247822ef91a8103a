#pragma once

#include <string>
#include <string_view>

namespace ondrel::platform::text {

// Text of any bytes, made fit for the toolkit: NUL and invalid UTF-8 become U+FFFD.
std::string validUtf8(std::string_view text);

// The same with an end: at most so many characters, and "…" where more was cut off. The toolkit lays out all
// of a text before it shows any, so that a text without an end would hang the program.
std::string boundedUtf8(std::string_view text, std::size_t longest);

} // namespace ondrel::platform::text
