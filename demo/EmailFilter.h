#pragma once

#include "demo/Arguments.h"
#include "demo/Mail.h"

#include <functional>

namespace ondrel::demo {

using EmailPredicate = std::function<bool(const Email&)>;

// The FilterCondition or FilterOperator of RFC 8621, 4.4.1, as a function: what clients search for. Of text
// all words are found, without regard to case. What is wrong is rejected.
EmailPredicate emailFilter(const boost::json::object& filter, Arguments& arguments);

} // namespace ondrel::demo
