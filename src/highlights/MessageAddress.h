#pragma once

#include <optional>
#include <string>

namespace ondrel::highlights {

// What the address of a message's page in the web application names. Its path ends in "<thread>.<email>", in
// the thread alone, or, where a notification has opened it, in the email alone. That of a mailbox ends in a
// text that is neither's id.
struct MessageAddress {
  std::string threadId; // never empty; valid UTF-8
  std::string emailId;  // empty where there is none

  static std::optional<MessageAddress> of(const std::string& url);

  bool operator==(const MessageAddress&) const = default;
};

} // namespace ondrel::highlights
