#include "demo/Arguments.h"

namespace ondrel::demo {

namespace json = boost::json;

const json::value* Arguments::find(const char* key) {
  known_.insert(key);
  const auto* value = values_.if_contains(key);
  return value && !value->is_null() ? value : nullptr;
}

std::optional<std::string> Arguments::text(const char* key) {
  const auto* value = find(key);
  if (!value)
    return std::nullopt;
  if (!value->is_string()) {
    reject(std::string(key) + " is no string");
    return std::nullopt;
  }
  return std::string(value->get_string());
}

std::optional<std::int64_t> Arguments::integer(const char* key) {
  const auto* value = find(key);
  if (!value)
    return std::nullopt;
  if (!value->is_int64()) {
    reject(std::string(key) + " is no integer");
    return std::nullopt;
  }
  return value->get_int64();
}

std::optional<std::size_t> Arguments::count(const char* key) {
  const auto number = integer(key);
  if (number && *number < 0) {
    reject(std::string(key) + " is negative");
    return std::nullopt;
  }
  return number ? std::optional(static_cast<std::size_t>(*number)) : std::nullopt;
}

bool Arguments::flag(const char* key, bool otherwise) {
  const auto* value = find(key);
  if (value && !value->is_bool())
    reject(std::string(key) + " is no boolean");
  return value && value->is_bool() ? value->get_bool() : otherwise;
}

std::optional<std::vector<std::string>> Arguments::texts(const char* key) {
  const auto* list = array(key);
  if (!list)
    return std::nullopt;
  std::vector<std::string> texts;
  for (const auto& element : *list) {
    if (!element.is_string()) {
      reject(std::string(key) + " holds something that is no string");
      return std::nullopt;
    }
    texts.emplace_back(element.get_string());
  }
  return texts;
}

const json::object* Arguments::object(const char* key) {
  const auto* value = find(key);
  if (value && !value->is_object())
    reject(std::string(key) + " is no object");
  return value ? value->if_object() : nullptr;
}

const json::array* Arguments::array(const char* key) {
  const auto* value = find(key);
  if (value && !value->is_array())
    reject(std::string(key) + " is no array");
  return value ? value->if_array() : nullptr;
}

void Arguments::reject(const std::string& description) {
  if (!error_)
    error_ = MethodError{"invalidArguments", description};
}

std::optional<MethodError> Arguments::error() {
  for (const auto& member : values_) {
    const std::string key(member.key());
    if (key != "accountId" && !known_.contains(key))
      reject("unknown argument " + key);
  }
  return error_;
}

} // namespace ondrel::demo
