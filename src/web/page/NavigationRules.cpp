#include "web/page/NavigationRules.h"

#include "base/Text.h"

#include <algorithm>
#include <array>

namespace ondrel::web {

namespace {

constexpr std::array<std::string_view, 2> web = {"http", "https"};
// That pages make for their frames; the last one is the engine's own, for the documents that it shows itself.
constexpr std::array<std::string_view, 3> ofSubframes = {"blob", "data", "webkit-pdfjs-viewer"};
// With a meaning for engines alone, and what must not reach the desktop in a page's name.
constexpr std::array<std::string_view, 10> ofEngine = {"about",      "file",     "filesystem", "inspector",
                                                       "javascript", "resource", "vbscript",   "view-source",
                                                       "ws",         "wss"};

// The program keeps the addresses of a tab's history, and a page can make as many as it likes.
constexpr std::size_t longestAddress = std::size_t{64} << 10;

// The address, whatever its query and fragment.
bool isAbout(std::string_view address, std::string_view page) {
  return address.substr(0, address.find_first_of("?#")) == page;
}

} // namespace

AddressUse addressUse(std::string_view address, TargetFrame frame) {
  const auto colon = address.find(':');
  if (colon == address.npos || colon == 0)
    return AddressUse::cancel;
  const auto scheme = base::lowercasedAscii(address.substr(0, colon));
  const auto isOneOf = [&scheme](const auto& schemes) {
    return std::ranges::find(schemes, scheme) != schemes.end();
  };
  if (isOneOf(web))
    return address.size() > longestAddress ? AddressUse::cancel : AddressUse::stay;
  if (isAbout(address, "about:blank"))
    return AddressUse::stay;
  if (isOneOf(ofSubframes) || isAbout(address, "about:srcdoc"))
    return frame == TargetFrame::unknown ? AddressUse::stay : AddressUse::cancel;
  return isOneOf(ofEngine) ? AddressUse::cancel : AddressUse::handToDesktop;
}

} // namespace ondrel::web
