#pragma once

#include "demo/FaultPlan.h"

#include <boost/json/fwd.hpp>

#include <optional>

namespace ondrel::demo {

// The fault that an order of "/control/fail" describes; none when it makes no sense.
std::optional<Fault> faultOf(const boost::json::object& order);

} // namespace ondrel::demo
