#pragma once

#include "demo/jmap/Arguments.h"
#include "demo/mail/Mail.h"

#include <functional>

namespace ondrel::demo::jmap {

using EmailPredicate = std::function<bool(const mail::Email&)>;

// The FilterCondition or FilterOperator of RFC 8621, 4.4.1, as a function: what clients search for. Of text
// all words are found, without regard to case. What is wrong is rejected.
EmailPredicate emailFilter(const boost::json::object& filter, Arguments& arguments);

} // namespace ondrel::demo::jmap
