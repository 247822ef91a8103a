#pragma once

#include "base/JsonReader.h"

#include <cstddef>
#include <string>

namespace ondrel::jmap {

// The arguments of the answer at that place of a reply (RFC 8620, section 3.4). Call ids are not compared.
base::JsonReader answer(const boost::json::value& reply, std::size_t index);
// The "list" of such an answer (RFC 8620, section 5.1), and the first element of that.
base::JsonReader answeredList(const boost::json::value& reply, std::size_t index);
base::JsonReader firstListed(const boost::json::value& reply, std::size_t index);

// Who to show for an email with its "from" (RFC 8621, section 4.1.2.3): name, else address, else "Unknown".
std::string senderText(const base::JsonReader& email);

} // namespace ondrel::jmap
