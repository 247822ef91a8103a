#include "highlights/file/HighlightQuote.h"

#include <boost/json/object.hpp>

namespace ondrel::highlights {

namespace json = boost::json;

json::object HighlightQuote::encode() const {
  return {{"prefix", json::string_view(prefix)},
          {"exact", json::string_view(exact)},
          {"suffix", json::string_view(suffix)}};
}

std::optional<HighlightQuote> HighlightQuote::decode(const base::JsonReader& from) {
  HighlightQuote quote;
  if (!from["prefix"].read(quote.prefix) || !from["exact"].read(quote.exact) ||
      !from["suffix"].read(quote.suffix))
    return std::nullopt;
  return quote;
}

} // namespace ondrel::highlights
