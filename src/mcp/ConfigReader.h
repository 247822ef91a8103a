#pragma once

#include "mcp/ConfigValue.h"

#include <boost/json/error.hpp>
#include <boost/json/string_view.hpp>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ondrel::mcp {

// Takes the parser's events, for a text that is parsed in one go, and keeps the numbers' own text. The names
// are those that boost::json::basic_parser calls.
struct ConfigReader {
  using Error = boost::system::error_code;
  using Text = boost::json::string_view;

  static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t max_object_size = unlimited;
  static constexpr std::size_t max_array_size = unlimited;
  static constexpr std::size_t max_key_size = unlimited;
  static constexpr std::size_t max_string_size = unlimited;

  ConfigValue result;
  bool repeatedKey = false;

  bool on_document_begin(Error&) { return true; }
  bool on_document_end(Error&) { return true; }
  bool on_object_begin(Error&) { return open(ConfigValue::Object()); }
  bool on_object_end(std::size_t, Error& error) { return close(error); }
  bool on_array_begin(Error&) { return open(ConfigValue::Array()); }
  bool on_array_end(std::size_t, Error& error) { return close(error); }
  bool on_key_part(Text part, std::size_t, Error&) { return collect(part); }
  bool on_key(Text part, std::size_t, Error&) {
    collect(part);
    open_.back().key = std::exchange(collected_, {});
    return true;
  }
  bool on_string_part(Text part, std::size_t, Error&) { return collect(part); }
  bool on_string(Text part, std::size_t, Error& error) {
    collect(part);
    return add(ConfigValue(std::exchange(collected_, {})), error);
  }
  bool on_number_part(Text part, Error&) { return collect(part); }
  bool on_int64(std::int64_t, Text part, Error& error) { return addNumber(part, error); }
  bool on_uint64(std::uint64_t, Text part, Error& error) { return addNumber(part, error); }
  bool on_double(double, Text part, Error& error) { return addNumber(part, error); }
  bool on_bool(bool value, Error& error) { return addLiteral(value ? "true" : "false", error); }
  bool on_null(Error& error) { return addLiteral("null", error); }
  bool on_comment_part(Text, Error&) { return true; }
  bool on_comment(Text, Error&) { return true; }

 private:
  // A container that is not complete, and the key of the member that comes next.
  struct Open {
    std::variant<ConfigValue::Object, ConfigValue::Array> elements;
    std::string key;
  };

  template <class Container>
  bool open(Container container) {
    open_.push_back({std::move(container), {}});
    return true;
  }

  bool close(Error& error) {
    auto elements = std::move(open_.back().elements);
    open_.pop_back();
    return add(std::visit([](auto&& value) { return ConfigValue(std::move(value)); }, std::move(elements)),
               error);
  }

  bool collect(Text part) {
    collected_.append(part);
    return true;
  }

  bool addNumber(Text part, Error& error) {
    collect(part);
    return addLiteral(std::exchange(collected_, {}), error);
  }

  bool addLiteral(std::string text, Error& error) {
    return add(ConfigValue(ConfigValue::Literal{std::move(text)}), error);
  }

  bool add(ConfigValue value, Error& error) {
    if (open_.empty()) {
      result = std::move(value);
      return true;
    }
    if (auto* array = std::get_if<ConfigValue::Array>(&open_.back().elements)) {
      array->push_back(std::move(value));
      return true;
    }
    auto& object = std::get<ConfigValue::Object>(open_.back().elements);
    repeatedKey = !object.emplace(std::exchange(open_.back().key, {}), std::move(value)).second;
    // The parser wants a reason; repeatedKey tells the true one.
    if (repeatedKey)
      error = boost::json::error::syntax;
    return !repeatedKey;
  }

  std::vector<Open> open_;
  std::string collected_;
};

} // namespace ondrel::mcp
