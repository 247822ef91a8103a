#pragma once

#include "demo/MailStore.h"

#include <boost/json/fwd.hpp>

#include <expected>
#include <string>

namespace ondrel::demo {

// Puts new mail into the store, as an order describes it. The answer names what was delivered; an error is
// one line of text.
std::expected<boost::json::object, std::string> deliver(MailStore& store, const boost::json::object& order);

} // namespace ondrel::demo
