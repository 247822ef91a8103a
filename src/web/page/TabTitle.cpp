#include "web/page/TabTitle.h"

#include <algorithm>

namespace ondrel::web {

namespace {

// "/mail/<mailbox>/", and nothing behind it but a query.
bool showsMailbox(std::string_view url) {
  constexpr std::string_view mail = "/mail/";
  const auto begin = url.find(mail);
  if (begin == std::string_view::npos)
    return false;
  const auto path = url.substr(begin + mail.size(), url.find_first_of("?#", begin) - begin - mail.size());
  return !path.empty() && path.find('/') >= path.size() - 1 && path != "compose";
}

bool isCount(std::string_view text) {
  return text.size() > 2 && text.front() == '(' && text.back() == ')' &&
         std::ranges::all_of(text.substr(1, text.size() - 2),
                             [](char c) { return (c >= '0' && c <= '9') || c == ',' || c == '.'; });
}

} // namespace

std::string tabTitle(std::string_view title, std::string_view url) {
  if (!showsMailbox(url))
    return std::string(title);
  if (const auto end = title.find(' '); end != std::string_view::npos && isCount(title.substr(0, end)))
    return std::string(title.substr(end + 1));
  if (const auto begin = title.rfind(' ');
      begin != std::string_view::npos && isCount(title.substr(begin + 1)))
    return std::string(title.substr(0, begin));
  return std::string(title);
}

} // namespace ondrel::web
