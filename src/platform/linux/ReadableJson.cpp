#include "platform/linux/ReadableJson.h"

#include <boost/json.hpp>
#include <fmt/format.h>

namespace ondrel::platform {

namespace {

namespace json = boost::json;

void append(std::string& out, const json::value& value, std::size_t level);

void appendDouble(std::string& out, double number) {
  const auto text = fmt::format("{}", number);
  out += text;
  if (text.find_first_of(".e") == std::string::npos)
    out += ".0";
}

void breakLine(std::string& out, std::size_t level) {
  out += '\n';
  out.append(level * 2, ' ');
}

void appendObject(std::string& out, const json::object& object, std::size_t level) {
  if (object.empty()) {
    out += "{}";
    return;
  }
  out += '{';
  bool first = true;
  for (const auto& member : object) {
    if (!std::exchange(first, false))
      out += ',';
    breakLine(out, level + 1);
    out += json::serialize(json::string_view(member.key()));
    out += ": ";
    append(out, member.value(), level + 1);
  }
  breakLine(out, level);
  out += '}';
}

void appendArray(std::string& out, const json::array& array, std::size_t level) {
  out += '[';
  bool first = true;
  for (const auto& element : array) {
    if (!std::exchange(first, false))
      out += ", ";
    append(out, element, level);
  }
  out += ']';
}

void append(std::string& out, const json::value& value, std::size_t level) {
  if (const auto* object = value.if_object())
    appendObject(out, *object, level);
  else if (const auto* array = value.if_array())
    appendArray(out, *array, level);
  else if (const auto* number = value.if_double())
    appendDouble(out, *number);
  else
    out += json::serialize(value);
}

} // namespace

std::string readableJson(const json::value& value) {
  std::string out;
  append(out, value, 0);
  out += '\n';
  return out;
}

} // namespace ondrel::platform
