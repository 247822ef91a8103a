#pragma once

#include <expected>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ondrel::mcp {

// JSON of another program's, to be changed in one place and written again without losing anything else:
// numbers keep their digits as they stand, whatever their size, and halves of surrogate pairs (which are no
// characters, but may be escaped in JSON) stay what they are.
class ConfigValue {
 public:
  using Array = std::vector<ConfigValue>;
  using Object = std::map<std::string, ConfigValue>;
  // A number, "true", "false" or "null", as it stands in the text.
  struct Literal {
    std::string text;
  };

  ConfigValue() : ConfigValue(Object()) {}
  explicit ConfigValue(Literal literal) : value_(std::move(literal)) {}
  explicit ConfigValue(std::string string) : value_(std::move(string)) {}
  explicit ConfigValue(Array array) : value_(std::move(array)) {}
  explicit ConfigValue(Object object) : value_(std::move(object)) {}

  // Refuses, with an error for people, what is not valid JSON and what it could not write again: an object
  // with two members of the same name, and levels without end.
  static std::expected<ConfigValue, std::string> parse(std::string_view text);
  // With one member a line and sorted keys.
  std::string text() const;

  Object* object() { return std::get_if<Object>(&value_); }
  bool isString(std::string_view text) const;

 private:
  void append(std::string& text, std::size_t level) const;

  std::variant<Literal, std::string, Array, Object> value_;
};

} // namespace ondrel::mcp
