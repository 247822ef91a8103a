#pragma once

#include <boost/json/fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::jmap {

// Reading of JSON that a server wrote: what is missing or of another type is absent, and nothing throws.
// Pointers point into what was read. A member that is null is there: ask if_contains() where that matters.

const boost::json::object* objectMember(const boost::json::object& object, std::string_view key);
const boost::json::array* arrayMember(const boost::json::object& object, std::string_view key);
std::optional<std::string> stringMember(const boost::json::object& object, std::string_view key);
std::optional<bool> boolMember(const boost::json::object& object, std::string_view key);
// Doubles without a fraction count as well; a number out of range is none.
std::optional<std::int64_t> integerMember(const boost::json::object& object, std::string_view key);

// The first element of an array member, when that is a string.
std::optional<std::string> firstStringMember(const boost::json::object& object, std::string_view key);
// The strings and the objects of an array, in its order, without elements of other types.
std::vector<std::string> strings(const boost::json::array& array);
std::vector<const boost::json::object*> objects(const boost::json::array& array);

// The arguments of the answer at that place of a reply (RFC 8620, section 3.4). Call ids are not compared.
const boost::json::object* answer(const boost::json::value& reply, std::size_t index);
// The "list" of such an answer (RFC 8620, section 5.1), and the first element of that, when it is an object.
const boost::json::array* answeredList(const boost::json::value& reply, std::size_t index);
const boost::json::object* firstListed(const boost::json::value& reply, std::size_t index);

// Who to show for an email with its "from" (RFC 8621, section 4.1.2.3): name, else address, else "Unknown".
std::string senderText(const boost::json::object& email);

} // namespace ondrel::jmap
