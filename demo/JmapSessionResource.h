#pragma once

#include <boost/json/fwd.hpp>

#include <string>

namespace ondrel::demo {

inline constexpr const char* sessionState = "session-1";

// The Session object of RFC 8620, 2. `origin` is that of the request, such as "http://localhost:8000".
boost::json::object sessionResource(const std::string& origin, const std::string& userCapability);

} // namespace ondrel::demo
