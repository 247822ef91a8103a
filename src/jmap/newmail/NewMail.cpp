#include "jmap/newmail/NewMail.h"

#include <fmt/format.h>

#include <algorithm>
#include <ranges>

namespace ondrel::jmap {

namespace {

constexpr std::size_t mostSenders = 3;
constexpr std::size_t mostLines = 3;

std::string sendersOf(const NewMail& mail) {
  std::vector<std::string> senders;
  for (const auto& email : mail.emails)
    if (std::ranges::find(senders, email.sender) == senders.end())
      senders.push_back(email.sender);
  // "and 1 other" would be as long as the name.
  const bool allFit = senders.size() <= mostSenders + 1;
  const auto named = allFit ? senders.size() : mostSenders;
  std::string text = senders.at(0);
  for (std::size_t i = 1; i < named; ++i)
    text += (allFit && i + 1 == named ? " and " : ", ") + senders[i];
  return allFit ? text : fmt::format("{} and {} others", text, senders.size() - named);
}

} // namespace

platform::NotificationContent summaryOf(const NewMail& mail) {
  platform::NotificationContent content;
  content.title = fmt::format("{} new messages", mail.emails.size());
  content.body = "From " + sendersOf(mail);
  for (const auto& email : mail.emails | std::views::take(mostLines))
    content.furtherLines.push_back(email.sender + ": " + email.subject);
  return content;
}

} // namespace ondrel::jmap
