#pragma once

#include <boost/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo {

// The parts of a path of names parted by slashes, with "~1" and "~0" read as "/" and "~".
std::vector<std::string> pointerTokens(std::string_view path);

// What a JSON pointer (RFC 6901) with the "*" of RFC 8620, 3.7, finds in a value. None when it leads
// nowhere.
std::optional<boost::json::value> valueAt(const boost::json::value& value, std::string_view pointer);

// Replaces each argument "#name" by "name" with what it refers to in the responses so far. False when a
// reference can't be followed or the argument is given both ways.
bool resolveReferences(boost::json::object& arguments, const boost::json::array& responses);

} // namespace ondrel::demo
