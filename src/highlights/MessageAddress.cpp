#include "highlights/MessageAddress.h"

#include "base/Text.h"
#include "base/Url.h"

namespace ondrel::highlights {

std::optional<MessageAddress> MessageAddress::of(const std::string& url) {
  const auto parsed = base::Url::parse(url);
  if (!parsed)
    return std::nullopt;
  const auto last = parsed->lastPathComponent();
  // Percent-decoding may give any bytes, and the highlights' file holds text only.
  if (!base::isValidUtf8(last))
    return std::nullopt;
  const auto end = last.find('.');
  auto threadId = last.substr(0, end);
  if (threadId.empty())
    return std::nullopt;
  const auto rest = end == std::string::npos ? std::string() : last.substr(end + 1);
  return MessageAddress{std::move(threadId), rest.substr(0, rest.find('.'))};
}

} // namespace ondrel::highlights
