#pragma once

#include <boost/json/fwd.hpp>

#include <string>

namespace ondrel::platform {

// JSON for people: a line for each member of objects, two spaces a level, doubles in their shortest form with
// a fraction or an exponent, so that they read back as doubles.
std::string readableJson(const boost::json::value& value);

} // namespace ondrel::platform
