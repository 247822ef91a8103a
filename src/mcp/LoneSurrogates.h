#pragma once

#include <string>
#include <string_view>

namespace ondrel::mcp {

// Half of a surrogate pair that stands in JSON alone passes through parsers as the three bytes that UTF-8
// would have for it.

// In a JSON text: escapes of single halves become bytes.
std::string loneSurrogatesAsBytes(std::string_view json);
// And back, in lower case.
std::string loneSurrogatesAsEscapes(std::string_view json);

} // namespace ondrel::mcp
