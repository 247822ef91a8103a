#include "platform/linux/packages/PackageId.h"

#include "base/Text.h"

#include <algorithm>
#include <array>

namespace ondrel::platform::packages {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

struct Parts {
  std::string_view epoch;
  std::string_view upstream;
  std::string_view revision;
};

Parts partsOf(std::string_view version) {
  Parts parts{{}, version, {}};
  if (const auto colon = version.find(':'); colon != version.npos) {
    parts.epoch = version.substr(0, colon);
    parts.upstream = version.substr(colon + 1);
  }
  if (const auto dash = parts.upstream.rfind('-'); dash != version.npos) {
    parts.revision = parts.upstream.substr(dash + 1);
    parts.upstream = parts.upstream.substr(0, dash);
  }
  return parts;
}

// "~" comes before the end, the end before letters, and letters before all else.
int weight(std::string_view rest) {
  if (rest.empty() || isDigit(rest.front()))
    return 0;
  const char c = rest.front();
  if (c == '~')
    return -1;
  return isLetter(c) ? c : c + 256;
}

std::string_view takeNumber(std::string_view& rest) {
  const auto end = std::ranges::find_if_not(rest, isDigit) - rest.begin();
  auto number = rest.substr(0, static_cast<std::size_t>(end));
  rest.remove_prefix(number.size());
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

int comparePart(std::string_view a, std::string_view b) {
  while (!a.empty() || !b.empty()) {
    while ((!a.empty() && !isDigit(a.front())) || (!b.empty() && !isDigit(b.front()))) {
      if (const int difference = weight(a) - weight(b))
        return difference;
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
    const auto numberA = takeNumber(a);
    const auto numberB = takeNumber(b);
    if (numberA.size() != numberB.size())
      return numberA.size() < numberB.size() ? -1 : 1;
    if (const int difference = numberA.compare(numberB))
      return difference;
  }
  return 0;
}

} // namespace

std::optional<PackageId> PackageId::parse(std::string_view text) {
  std::array<std::string_view, 3> fields;
  auto rest = text;
  for (auto& field : fields) {
    const auto end = rest.find(';');
    if (end == rest.npos)
      return std::nullopt;
    field = rest.substr(0, end);
    rest.remove_prefix(end + 1);
  }
  if (fields[0].empty() || fields[1].empty())
    return std::nullopt;
  return PackageId{std::string(fields[0]), std::string(fields[1]), std::string(fields[2]), std::string(text)};
}

bool isNewerVersion(std::string_view version, std::string_view than) {
  const auto a = partsOf(version);
  const auto b = partsOf(than);
  for (const auto part : {&Parts::epoch, &Parts::upstream, &Parts::revision})
    if (const int difference = comparePart(a.*part, b.*part))
      return difference > 0;
  return false;
}

std::string shownVersion(std::string_view version, std::string_view installed) {
  const auto upstream = partsOf(version).upstream;
  const auto known = upstream == partsOf(installed).upstream ? version : upstream;
  return base::shortDisplayLine(known);
}

} // namespace ondrel::platform::packages
