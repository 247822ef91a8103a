#include "jmap/newmail/AnnouncedMail.h"

#include <algorithm>
#include <utility>

namespace ondrel::jmap {

void AnnouncedMail::add(std::string notification, std::vector<std::string> emailIds) {
  entries_.push_back({std::move(notification), {emailIds.begin(), emailIds.end()}});
  if (entries_.size() > most)
    entries_.pop_front();
}

void AnnouncedMail::forget(const std::string& notification) {
  std::erase_if(entries_, [&](const Entry& entry) { return entry.notification == notification; });
}

bool AnnouncedMail::tellsOf(const std::string& emailId) const {
  return std::ranges::any_of(entries_, [&](const Entry& entry) { return entry.emailIds.contains(emailId); });
}

std::set<std::string> AnnouncedMail::emailIds() const {
  std::set<std::string> all;
  for (const auto& entry : entries_)
    all.insert(entry.emailIds.begin(), entry.emailIds.end());
  return all;
}

std::vector<std::string> AnnouncedMail::remove(const std::string& emailId) {
  std::vector<std::string> emptied;
  for (auto& entry : entries_)
    if (entry.emailIds.erase(emailId) > 0 && entry.emailIds.empty())
      emptied.push_back(entry.notification);
  for (const auto& notification : emptied)
    forget(notification);
  return emptied;
}

} // namespace ondrel::jmap
