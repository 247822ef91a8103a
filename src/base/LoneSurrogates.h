#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ondrel::base {

// Half of a surrogate pair can stand in JSON as an escape ("\\ud83d" with nothing after it) though no
// character is meant. Programs that cut texts anywhere write such, and parsers refuse it. The same text with
// what the function makes of each such half (0xD800 to 0xDFFF) in its place.
std::string replacingLoneSurrogates(std::string_view json,
                                    const std::function<std::string(unsigned half)>& replacement);

} // namespace ondrel::base
