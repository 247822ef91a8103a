#pragma once

#include "demo/Mail.h"

#include <boost/json/fwd.hpp>

#include <optional>
#include <string>

namespace ondrel::demo {

// Whether two header field names are the same, which know no case.
bool isSameField(std::string_view a, std::string_view b);

// [{name, email}], or null for nobody.
boost::json::value addressesJson(const std::vector<Address>& addresses);
boost::json::value addressesJson(const Address& address);

// The value of a property such as "header:Subject:asText:all", RFC 8621, 4.1.3. Of the parsed forms there
// are asText, asMessageIds, asDate (Date) and asAddresses (From, To). None for another form or field.
std::optional<boost::json::value> headerProperty(const Email& email, const std::string& property);

} // namespace ondrel::demo
