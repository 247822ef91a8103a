#include "jmap/mail/MessageURL.h"

#include "base/Text.h"
#include "base/Url.h"

#include <fmt/format.h>

namespace ondrel::jmap {

std::optional<std::string> mailPageURL(std::string_view webAppBaseURL, std::string_view mailboxName,
                                       std::string_view page, std::string_view accountParameter) {
  auto text = fmt::format("{}mail/{}/{}?u={}", webAppBaseURL, base::percentEncodedPath(mailboxName), page,
                          accountParameter);
  return base::Url::parse(text) ? std::optional(std::move(text)) : std::nullopt;
}

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

} // namespace ondrel::jmap
