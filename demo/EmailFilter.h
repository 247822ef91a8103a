#pragma once

#include "demo/JmapMethod.h"

#include <boost/json/fwd.hpp>

#include <expected>
#include <functional>

namespace ondrel::demo {

using EmailPredicate = std::function<bool(const Email&)>;

// The FilterCondition or FilterOperator of RFC 8621, 4.4.1, as a function. Text is found without regard to
// case, all words of it or a phrase in double quotes.
std::expected<EmailPredicate, MethodError> emailFilter(const MailStore& store,
                                                       const boost::json::object& filter);

} // namespace ondrel::demo
