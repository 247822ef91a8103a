#pragma once

#include "demo/JmapMethod.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::demo {

// Reads the arguments of one method call. The first one of a wrong type is kept as the error, so that a
// method reads all that it knows and asks once. JSON null counts as missing.
class Arguments {
 public:
  explicit Arguments(const boost::json::object& values) : values_(values) {}

  std::optional<std::string> text(const char* key);
  std::optional<std::int64_t> integer(const char* key);
  // 0 or more.
  std::optional<std::size_t> count(const char* key);
  bool flag(const char* key, bool otherwise);
  std::optional<std::vector<std::string>> texts(const char* key);
  const boost::json::object* object(const char* key);
  const boost::json::array* array(const char* key);
  // For what the checks above can't see.
  void reject(const std::string& description);

  // Asked after everything was read: an argument that nobody asked for is an error too.
  std::optional<MethodError> error();

 private:
  const boost::json::value* find(const char* key);

  const boost::json::object& values_;
  std::set<std::string> known_;
  std::optional<MethodError> error_;
};

} // namespace ondrel::demo
