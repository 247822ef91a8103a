#include "demo/ResultReference.h"

#include <charconv>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

std::string unescaped(std::string_view token) {
  std::string text;
  for (std::size_t i = 0; i < token.size(); ++i)
    if (token[i] == '~' && i + 1 < token.size() && (token[i + 1] == '0' || token[i + 1] == '1'))
      text += token[++i] == '0' ? '~' : '/';
    else
      text += token[i];
  return text;
}

const json::value* responseTo(const json::value& reference, const json::array& responses) {
  const auto* object = reference.if_object();
  const auto* callId = object ? object->if_contains("resultOf") : nullptr;
  const auto* name = object ? object->if_contains("name") : nullptr;
  if (!callId || !name)
    return nullptr;
  for (const auto& response : responses)
    if (response.at(2) == *callId)
      return response.at(0) == *name ? &response.at(1) : nullptr;
  return nullptr;
}

} // namespace

std::vector<std::string> pointerTokens(std::string_view path) {
  std::vector<std::string> tokens;
  for (;;) {
    const auto end = path.find('/');
    tokens.push_back(unescaped(path.substr(0, end)));
    if (end == std::string_view::npos)
      return tokens;
    path.remove_prefix(end + 1);
  }
}

std::optional<json::value> valueAt(const json::value& value, std::string_view pointer) {
  if (pointer.empty())
    return value;
  if (pointer.front() != '/')
    return std::nullopt;
  pointer.remove_prefix(1);
  const auto end = pointer.find('/');
  const auto token = unescaped(pointer.substr(0, end));
  const auto rest = end == std::string_view::npos ? std::string_view() : pointer.substr(end);
  if (const auto* object = value.if_object()) {
    const auto* member = object->if_contains(token);
    return member ? valueAt(*member, rest) : std::nullopt;
  }
  const auto* array = value.if_array();
  if (!array)
    return std::nullopt;
  if (token != "*") {
    std::size_t index = 0;
    const auto [stop, error] = std::from_chars(token.data(), token.data() + token.size(), index);
    const bool isIndex = error == std::errc() && stop == token.data() + token.size();
    return isIndex && index < array->size() ? valueAt((*array)[index], rest) : std::nullopt;
  }
  json::array found;
  for (const auto& element : *array) {
    auto part = valueAt(element, rest);
    if (!part)
      return std::nullopt;
    if (auto* list = part->if_array()) // lists are joined, not nested
      found.insert(found.end(), list->begin(), list->end());
    else
      found.push_back(std::move(*part));
  }
  return found;
}

bool resolveReferences(json::object& arguments, const json::array& responses) {
  std::vector<std::string> keys;
  for (const auto& member : arguments)
    if (member.key().starts_with('#'))
      keys.emplace_back(member.key());
  for (const auto& key : keys) {
    const auto name = key.substr(1);
    const auto reference = arguments.at(key);
    const auto* result = responseTo(reference, responses);
    const auto* path = result ? reference.get_object().if_contains("path") : nullptr;
    if (arguments.contains(name) || !path || !path->is_string())
      return false;
    auto found = valueAt(*result, path->get_string());
    if (!found)
      return false;
    arguments.erase(key);
    arguments[name] = std::move(*found);
  }
  return true;
}

} // namespace ondrel::demo
