#pragma once

#include <boost/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>

namespace ondrel::demo {

// Fields of an order, with what holds when they are missing or of another type.
inline std::string textOr(const boost::json::object& order, std::string_view key, std::string otherwise) {
  const auto* value = order.if_contains(key);
  return value && value->is_string() ? std::string(value->get_string()) : otherwise;
}

inline std::int64_t numberOr(const boost::json::object& order, std::string_view key, std::int64_t otherwise) {
  const auto* value = order.if_contains(key);
  return value && value->is_int64() ? value->get_int64() : otherwise;
}

inline bool flagOr(const boost::json::object& order, std::string_view key, bool otherwise) {
  const auto* value = order.if_contains(key);
  return value && value->is_bool() ? value->get_bool() : otherwise;
}

inline bool isNull(const boost::json::object& order, std::string_view key) {
  const auto* value = order.if_contains(key);
  return value && value->is_null();
}

} // namespace ondrel::demo
