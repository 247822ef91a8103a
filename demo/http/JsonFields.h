#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value_to.hpp>

#include <string_view>

namespace ondrel::demo::http {

// A member of an object, or what holds when it is missing or of another type.
template <class T>
T fieldOr(const boost::json::object& object, std::string_view key, T otherwise) {
  const auto* value = object.if_contains(key);
  if (!value)
    return otherwise;
  auto read = boost::json::try_value_to<T>(*value);
  return read ? *std::move(read) : otherwise;
}

} // namespace ondrel::demo::http
