#pragma once

#include "demo/mail/MailStore.h"

#include <boost/json/fwd.hpp>

#include <set>
#include <string>

namespace ondrel::demo::jmap {

// The names of all properties that emailJson() gives.
std::set<std::string> emailProperties();

// The Email object of RFC 8621, 4.1, as far as clients ask for it. A message of the page's own flow has its
// text twice, as plain text and as HTML; one that is shown in a frame is HTML alone; one may have no text at
// all. Clients get the first of these, and its value when they want it.
boost::json::object emailJson(const mail::MailStore& store, const mail::Email& email, bool withText);

} // namespace ondrel::demo::jmap
