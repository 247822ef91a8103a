#include "highlights/HighlightQuote.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace ondrel::highlights {

namespace json = boost::json;

json::object HighlightQuote::encode() const {
  return {{"prefix", json::string_view(prefix)},
          {"exact", json::string_view(exact)},
          {"suffix", json::string_view(suffix)}};
}

std::optional<HighlightQuote> HighlightQuote::decode(const json::value& value) {
  const auto* members = value.if_object();
  if (!members)
    return std::nullopt;
  HighlightQuote quote;
  const auto read = [members](std::string_view key, std::string& field) {
    const auto* member = members->if_contains(key);
    const auto* text = member ? member->if_string() : nullptr;
    if (text)
      field.assign(text->data(), text->size());
    return text != nullptr;
  };
  if (!read("prefix", quote.prefix) || !read("exact", quote.exact) || !read("suffix", quote.suffix))
    return std::nullopt;
  return quote;
}

} // namespace ondrel::highlights
