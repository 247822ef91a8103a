#include "jmap/MessageURL.h"

#include "base/Url.h"

#include <fmt/format.h>

namespace ondrel::jmap {

std::optional<std::string> mailPageURL(std::string_view webAppBaseURL, std::string_view mailboxName,
                                       std::string_view page, std::string_view accountParameter) {
  auto text = fmt::format("{}mail/{}/{}?u={}", webAppBaseURL, base::percentEncodedPath(mailboxName), page,
                          accountParameter);
  return base::Url::parse(text) ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace ondrel::jmap
