#include "jmap/newmail/NewMail.h"

#include "base/ListText.h"
#include "base/Translation.h"

#include <algorithm>
#include <ranges>
#include <utility>

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
  if (allFit)
    return base::andList(std::move(senders));
  const auto others = senders.size() - mostSenders;
  senders.resize(mostSenders);
  // TRANSLATORS: {0} are the names of some senders
  return base::trPlural("{0} and {1} other", "{0} and {1} others", others, base::commaList(senders), others);
}

} // namespace

platform::NotificationContent summaryOf(const NewMail& mail) {
  platform::NotificationContent content;
  content.title = base::trPlural("{} new message", "{} new messages", mail.emails.size(), mail.emails.size());
  // TRANSLATORS: {} are the names of senders
  content.body = base::trFormat("From {}", sendersOf(mail));
  for (const auto& email : mail.emails | std::views::take(mostLines))
    content.furtherLines.push_back(email.sender + ": " + email.subject);
  return content;
}

} // namespace ondrel::jmap
