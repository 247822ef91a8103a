#pragma once

#include "demo/mail/MailStore.h"

#include <boost/json/fwd.hpp>

#include <optional>

namespace ondrel::demo::control {

// Puts new mail into the store, as an order describes it. The answer names what was delivered; none when the
// order makes no sense.
std::optional<boost::json::object> deliver(mail::MailStore& store, const boost::json::object& order);

} // namespace ondrel::demo::control
