#include "web/page/ScriptMessageFields.h"

#include "base/JsonReader.h"
#include "base/Text.h"

#include <boost/json/value.hpp>

namespace ondrel::web {

std::optional<ScriptMessageFields> ScriptMessageFields::from(const boost::json::value& body) {
  const auto* object = body.if_object();
  if (!object)
    return std::nullopt;
  ScriptMessageFields result;
  for (const auto& [key, value] : *object)
    if (!base::JsonReader(value).read(result.fields_[key]))
      return std::nullopt;
  return result;
}

const std::string* ScriptMessageFields::find(std::string_view key) const {
  const auto found = fields_.find(key);
  return found == fields_.end() ? nullptr : &found->second;
}

std::optional<long long> ScriptMessageFields::integer(std::string_view key) const {
  const auto* text = find(key);
  return text ? base::parsedInteger(*text) : std::nullopt;
}

} // namespace ondrel::web
