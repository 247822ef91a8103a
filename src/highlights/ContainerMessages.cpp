#include "highlights/ContainerMessages.h"

#include "base/Text.h"
#include "base/Url.h"
#include "web/WindowViewModel.h"

#include <algorithm>

namespace ondrel::highlights {

namespace {

// A page tells any number it likes. No conversation comes near this one.
constexpr std::int64_t mostContainers = 10'000;

} // namespace

std::vector<std::optional<std::string>> containerMessageIds(const web::WindowViewModel& tab) {
  const auto& thread = tab.highlightThreadEmails;
  if (thread.empty() || tab.highlightContainerCount < 1)
    return {};
  // Unsigned, so that no number of the page's overflows: what is negative comes out behind the thread's end.
  std::uint64_t offset = 0;
  const auto open = std::ranges::find(thread, tab.highlightCurrentInternalId,
                                      [](const auto& email) { return std::optional(email.internalId); });
  if (open != thread.end() && tab.highlightFocusedContainerIndex)
    offset = static_cast<std::uint64_t>(open - thread.begin()) -
             static_cast<std::uint64_t>(*tab.highlightFocusedContainerIndex);
  std::vector<std::optional<std::string>> ids(
      static_cast<std::size_t>(std::min(tab.highlightContainerCount, mostContainers)));
  for (std::size_t container = 0; container < ids.size(); ++container)
    if (const auto position = container + offset; position < thread.size())
      ids[container] = thread[position].messageId;
  return ids;
}

std::optional<std::string> threadIdFromURL(const std::string& url) {
  const auto parsed = base::Url::parse(url);
  if (!parsed)
    return std::nullopt;
  const auto last = parsed->lastPathComponent();
  auto id = last.substr(0, last.find('.'));
  // Percent-decoding may give any bytes, and the highlights' file holds text only.
  return id.empty() || !base::isValidUtf8(id) ? std::nullopt : std::optional(std::move(id));
}

} // namespace ondrel::highlights
