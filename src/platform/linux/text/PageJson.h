#pragma once

#include <boost/json/value.hpp>

#include <optional>
#include <string_view>

namespace ondrel::platform::text {

// JSON that a page's value was turned into. Halves of surrogate pairs, which a script's strings may hold
// alone, become U+FFFD. Absent when it is no JSON or nested deeper than deepestPageJson.
inline constexpr std::size_t deepestPageJson = 32;
std::optional<boost::json::value> parsePageJson(std::string_view text);

} // namespace ondrel::platform::text
