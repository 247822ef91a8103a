#pragma once

#include <optional>
#include <string>

namespace ondrel::jmap {

// The mailboxes that the program has asked for, until the account changes.
struct MailboxCache {
  std::optional<std::string> inboxId;
  std::optional<std::string> inboxName;
  std::optional<std::string> trashId;
  std::optional<std::string> junkId;

  bool operator==(const MailboxCache&) const = default;
};

} // namespace ondrel::jmap
