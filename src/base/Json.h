#pragma once

#include <boost/json/fwd.hpp>

#include <string>
#include <string_view>

namespace ondrel::base {

// JSON for readers other than ourselves: doubles in the shortest form that reads back as one ("1.1", "1.0",
// never "1E0"); what JSON has no number for becomes null. `indent` spaces a level for files that people read,
// none for one line.
std::string jsonText(const boost::json::value& value, int indent = 0);

// A string literal of JSON, quotes included, that is one of JavaScript too.
std::string jsonStringLiteral(std::string_view text);

} // namespace ondrel::base
