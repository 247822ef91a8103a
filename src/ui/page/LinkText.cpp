#include "ui/page/LinkText.h"

#include "base/Text.h"
#include "base/Url.h"

#include <string_view>

namespace ondrel::ui {

namespace {

constexpr std::size_t longestRest = 1000; // bytes; a line on the widest screen has fewer
constexpr std::size_t longestSite = 300;  // names of hosts are shorter

std::string shortened(std::string_view text) {
  if (text.size() <= longestRest)
    return base::displayLine(text);
  const auto head = base::cutAtCharacter(text, longestRest / 2);
  auto tail = text.substr(text.size() - longestRest / 2);
  while (!tail.empty() && (static_cast<unsigned char>(tail.front()) & 0xC0) == 0x80)
    tail.remove_prefix(1);
  return base::displayLine(head) + "…" + base::displayLine(tail);
}

// Where an address leads: its scheme, its host and port, without who is to be named there, since such a name
// can look like a host. Of a letter, to whom.
std::string siteOf(const base::Url& url) {
  if (!url.scheme())
    return {};
  if (url.host())
    return *url.scheme() + "://" + url.hostWithPort();
  return base::lowercasedAscii(*url.scheme()) == "mailto" ? *url.scheme() + ":" + url.path() : std::string();
}

// What stands behind that.
std::string_view restOf(const base::Url& url, std::string_view address) {
  if (!url.host())
    return address.substr(url.scheme()->size() + 1 + url.path().size());
  const auto authority = url.scheme()->size() + std::string_view("://").size();
  const auto end = address.find_first_of("/?#", authority);
  return end == address.npos ? std::string_view() : address.substr(end);
}

} // namespace

LinkText linkText(const std::string& address) {
  const auto url = base::Url::parse(address);
  auto site = url ? siteOf(*url) : std::string();
  if (site.empty() || site.size() > longestSite)
    return {"", shortened(address)};
  return {base::displayLine(site), shortened(restOf(*url, address))};
}

} // namespace ondrel::ui
