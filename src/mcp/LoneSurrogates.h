#pragma once

#include <string>
#include <string_view>

namespace ondrel::mcp {

// Half of a surrogate pair can stand in JSON as an escape ("\\ud83d" with nothing after it) though no
// character is meant. Programs that cut texts anywhere write such. Readers refuse it; as the three bytes that
// UTF-8 would have for it, it passes through them.

// In a JSON text: escapes of single halves become bytes.
std::string loneSurrogatesAsBytes(std::string_view json);
// And back, in lower case.
std::string loneSurrogatesAsEscapes(std::string_view json);

} // namespace ondrel::mcp
