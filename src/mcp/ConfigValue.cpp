#include "mcp/ConfigValue.h"

#include "base/Json.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "mcp/ConfigReader.h"
#include "mcp/LoneSurrogates.h"

#include <boost/json/basic_parser_impl.hpp>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

constexpr std::size_t deepest = 512;

void startLine(std::string& text, std::size_t level) {
  text += '\n';
  text.append(level * 2, ' ');
}

} // namespace

std::expected<ConfigValue, std::string> ConfigValue::parse(std::string_view given) {
  if (!base::isValidUtf8(given))
    return std::unexpected(base::tr("it is not UTF-8"));
  const auto text = loneSurrogatesAsBytes(given);
  json::parse_options options;
  options.max_depth = deepest;
  options.allow_invalid_utf8 = true; // those bytes
  json::basic_parser<ConfigReader> parser(options);
  boost::system::error_code failure;
  const auto read = parser.write_some(false, text.data(), text.size(), failure);
  if (parser.handler().repeatedKey)
    return std::unexpected(base::tr("an object has two members of the same name"));
  if (failure)
    return std::unexpected(failure.message());
  if (text.find_first_not_of(" \t\r\n", read) != std::string::npos)
    return std::unexpected(base::tr("something follows the JSON"));
  return std::move(parser.handler().result);
}

std::string ConfigValue::text() const {
  std::string text;
  append(text, 0);
  return loneSurrogatesAsEscapes(text);
}

bool ConfigValue::isString(std::string_view text) const {
  const auto* string = std::get_if<std::string>(&value_);
  return string && *string == text;
}

void ConfigValue::append(std::string& text, std::size_t level) const {
  const auto appendAll = [&](char open, char close, const auto& elements, auto appendOne) {
    text += open;
    for (bool first = true; const auto& element : elements) {
      if (!first)
        text += ',';
      first = false;
      startLine(text, level + 1);
      appendOne(element);
    }
    if (!elements.empty())
      startLine(text, level);
    text += close;
  };
  if (const auto* literal = std::get_if<Literal>(&value_))
    text += literal->text;
  else if (const auto* string = std::get_if<std::string>(&value_))
    text += base::jsonStringLiteral(*string);
  else if (const auto* array = std::get_if<Array>(&value_))
    appendAll('[', ']', *array, [&](const ConfigValue& element) { element.append(text, level + 1); });
  else
    appendAll('{', '}', std::get<Object>(value_), [&](const auto& member) {
      text += base::jsonStringLiteral(member.first);
      text += ": ";
      member.second.append(text, level + 1);
    });
}

} // namespace ondrel::mcp
