#include "highlights/Conversation.h"

#include <algorithm>

namespace ondrel::highlights {

bool holds(const std::vector<jmap::ThreadEmailInfo>& emails, const std::string& emailId) {
  return std::ranges::find(emails, emailId, &jmap::ThreadEmailInfo::internalId) != emails.end();
}

bool Conversation::isAt(const jmap::MessageAddress& other) const {
  if (other.threadId == address.threadId || (!threadId.empty() && other.threadId == threadId))
    return true;
  // The application completes an address that names an email alone, and shortens one.
  return !openId.empty() && (other.emailId == openId || (other.emailId.empty() && other.threadId == openId));
}

} // namespace ondrel::highlights
