#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {

// What the address of a message's page in the web application names. Its path ends in "<thread>.<email>", in
// the thread alone, or, where a notification has opened it, in the email alone. That of a mailbox ends in a
// text that is neither's id.
struct MessageAddress {
  std::string threadId; // never empty; valid UTF-8
  std::string emailId;  // empty where there is none

  // As it stands at the end of the path.
  std::string pathComponent() const { return threadId + "." + emailId; }

  static std::optional<MessageAddress> of(const std::string& url);

  bool operator==(const MessageAddress&) const = default;
};

// The web application's page of a mailbox and something in it: a thread's message ("T1.M2") or just an email
// id. The account's name in addresses goes in `accountParameter`. Absent when that makes no URL.
std::optional<std::string> mailPageURL(std::string_view webAppBaseURL, std::string_view mailboxName,
                                       std::string_view page, std::string_view accountParameter);

} // namespace ondrel::jmap
