#include "base/LoopbackHost.h"

#include "base/Text.h"

#include <charconv>

namespace ondrel::base {

namespace {

// A decimal number of one byte, without leading zeros: some read those as octal.
bool isOctet(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value <= 255 &&
         (text.size() == 1 || text.front() != '0');
}

bool isLoopbackV4(std::string_view host) {
  if (!host.starts_with("127."))
    return false;
  int octets = 0;
  for (;; ++octets) {
    const auto dot = host.find('.');
    if (!isOctet(host.substr(0, dot)))
      return false;
    if (dot == host.npos)
      return octets == 3;
    host.remove_prefix(dot + 1);
  }
}

} // namespace

bool isLoopbackHost(std::string_view host) {
  const auto name = lowercasedAscii(host);
  return name == "localhost" || name.ends_with(".localhost") || name == "::1" || name == "[::1]" ||
         isLoopbackV4(name);
}

} // namespace ondrel::base
