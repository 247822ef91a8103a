#include "platform/linux/text/PageJson.h"

#include "base/LoneSurrogates.h"

#include <boost/json/parse.hpp>

namespace ondrel::platform::text {

std::optional<boost::json::value> parsePageJson(std::string_view text) {
  boost::json::parse_options options;
  options.max_depth = deepestPageJson;
  boost::json::error_code error;
  const auto whole = base::replacingLoneSurrogates(text, [](unsigned) { return "\\uFFFD"; });
  auto value = boost::json::parse(whole, error, {}, options);
  if (error)
    return std::nullopt;
  return value;
}

} // namespace ondrel::platform::text
