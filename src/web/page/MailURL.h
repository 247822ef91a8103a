#pragma once

#include <string_view>

namespace ondrel::web {

// The address is one of the service's mail application.
constexpr bool containsMail(std::string_view url) {
  return url.contains("/mail/");
}

// The address shows the editor of a new message.
constexpr bool isComposeURL(std::string_view url) {
  return containsMail(url) && (url.contains("compose?") || url.ends_with("/compose"));
}

} // namespace ondrel::web
