#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value_to.hpp>

#include <expected>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace ondrel::demo::jmap {

// The arguments of an "error" response, RFC 8620, 3.6.2.
struct MethodError {
  std::string type;
  std::string description = {};
};

using MethodResult = std::expected<boost::json::object, MethodError>;

// Reads the arguments of one method call. The first thing that is wrong is kept as the error, so that a
// method reads all that it knows and asks once.
class Arguments {
 public:
  explicit Arguments(const boost::json::object& values) : values_(values) {}

  // None when it is missing or null; one of another type is an error.
  template <class T>
  std::optional<T> get(std::string_view key) {
    known_.emplace(key);
    const auto* value = values_.if_contains(key);
    if (!value || value->is_null())
      return std::nullopt;
    auto read = boost::json::try_value_to<T>(*value);
    if (read)
      return *std::move(read);
    reject(std::string(key) + " is of a wrong type");
    return std::nullopt;
  }
  // For what the types can't tell.
  void reject(std::string description, std::string type = "invalidArguments") {
    if (!error_)
      error_ = MethodError{std::move(type), std::move(description)};
  }
  // Asked after everything was read: an argument that nobody asked for is an error too.
  std::optional<MethodError> error() {
    for (const auto& member : values_)
      if (member.key() != "accountId" && !known_.contains(std::string(member.key())))
        reject("unknown argument " + std::string(member.key()));
    return error_;
  }

 private:
  const boost::json::object& values_;
  std::set<std::string> known_;
  std::optional<MethodError> error_;
};

} // namespace ondrel::demo::jmap
