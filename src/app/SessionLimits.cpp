#include "app/SessionLimits.h"

#include "base/Text.h"

namespace ondrel::app {

namespace {

constexpr std::size_t longestTitle = std::size_t{1} << 10;
constexpr std::size_t longestAddress = std::size_t{64} << 10;

void cut(std::string& text, std::size_t size) {
  if (text.size() <= size)
    return;
  text.resize(size);
  while (!base::isValidUtf8(text))
    text.pop_back();
}

std::string originOf(const std::string& address) {
  const auto authority = address.find("://");
  const auto end = authority == std::string::npos ? authority : address.find_first_of("/?#", authority + 3);
  return end < longestAddress ? address.substr(0, end) + "/" : std::string();
}

} // namespace

void limitSize(PersistedSession& session) {
  auto room = largestSessionStates;
  for (auto& window : session.windows)
    for (auto& tab : window.tabs) {
      cut(tab.title, longestTitle);
      if (tab.urlString.size() > longestAddress)
        tab.urlString = originOf(tab.urlString);
      if (!tab.interactionState)
        continue;
      const auto size = tab.interactionState->size();
      if (size > largestTabState || size > room)
        tab.interactionState.reset();
      else
        room -= size;
    }
}

} // namespace ondrel::app
