#include "platform/HttpClient.h"

#include "base/Text.h"

#include <algorithm>

namespace ondrel::platform {

std::optional<std::string> headerValue(const HttpHeaders& headers, std::string_view name) {
  const auto wanted = base::lowercasedAscii(name);
  const auto found = std::ranges::find_if(
      headers, [&wanted](const auto& header) { return base::lowercasedAscii(header.first) == wanted; });
  if (found == headers.end())
    return std::nullopt;
  return found->second;
}

} // namespace ondrel::platform
