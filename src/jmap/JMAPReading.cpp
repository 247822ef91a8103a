#include "jmap/JMAPReading.h"

#include <boost/json/value.hpp>

#include <cmath>
#include <utility>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

const json::value* elementAt(const json::array* array, std::size_t index) {
  return array && index < array->size() ? &(*array)[index] : nullptr;
}

std::optional<std::string> text(const json::value* value) {
  const auto* string = value ? value->if_string() : nullptr;
  return string ? std::optional(std::string(*string)) : std::nullopt;
}

std::optional<std::string> nonEmpty(std::optional<std::string> string) {
  return string && !string->empty() ? std::move(string) : std::nullopt;
}

} // namespace

const json::object* objectMember(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value ? value->if_object() : nullptr;
}

const json::array* arrayMember(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value ? value->if_array() : nullptr;
}

std::optional<std::string> stringMember(const json::object& object, std::string_view key) {
  return text(object.if_contains(key));
}

std::optional<bool> boolMember(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  const auto* boolean = value ? value->if_bool() : nullptr;
  return boolean ? std::optional(*boolean) : std::nullopt;
}

std::optional<std::int64_t> integerMember(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  if (!value)
    return std::nullopt;
  if (const auto* integer = value->if_int64())
    return *integer;
  if (const auto* natural = value->if_uint64(); natural && std::in_range<std::int64_t>(*natural))
    return static_cast<std::int64_t>(*natural);
  constexpr double limit = 9223372036854775808.0; // 2^63
  if (const auto* number = value->if_double();
      number && *number >= -limit && *number < limit && std::trunc(*number) == *number)
    return static_cast<std::int64_t>(*number);
  return std::nullopt;
}

std::optional<std::string> firstStringMember(const json::object& object, std::string_view key) {
  return text(elementAt(arrayMember(object, key), 0));
}

std::vector<std::string> strings(const json::array& array) {
  std::vector<std::string> result;
  result.reserve(array.size());
  for (const auto& element : array)
    if (const auto* string = element.if_string())
      result.emplace_back(*string);
  return result;
}

std::vector<const json::object*> objects(const json::array& array) {
  std::vector<const json::object*> result;
  result.reserve(array.size());
  for (const auto& element : array)
    if (const auto* object = element.if_object())
      result.push_back(object);
  return result;
}

const json::object* answer(const json::value& reply, std::size_t index) {
  const auto* top = reply.if_object();
  const auto* response = elementAt(top ? arrayMember(*top, "methodResponses") : nullptr, index);
  const auto* arguments = elementAt(response ? response->if_array() : nullptr, 1);
  return arguments ? arguments->if_object() : nullptr;
}

const json::array* answeredList(const json::value& reply, std::size_t index) {
  const auto* arguments = answer(reply, index);
  return arguments ? arrayMember(*arguments, "list") : nullptr;
}

const json::object* firstListed(const json::value& reply, std::size_t index) {
  const auto* first = elementAt(answeredList(reply, index), 0);
  return first ? first->if_object() : nullptr;
}

std::string senderText(const json::object& email) {
  const auto* first = elementAt(arrayMember(email, "from"), 0);
  const auto* address = first ? first->if_object() : nullptr;
  if (!address)
    return "Unknown";
  if (auto name = nonEmpty(stringMember(*address, "name")))
    return *name;
  return nonEmpty(stringMember(*address, "email")).value_or("Unknown");
}

} // namespace ondrel::jmap
