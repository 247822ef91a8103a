#pragma once

#include "base/JsonReader.h"
#include "jmap/mail/MailRequest.h"

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {

// One of the mailboxes that have a role (RFC 8621, section 2), and how its query names itself.
struct RoleQuery {
  std::string_view operation;
  std::string_view role;
  std::string_view roleInLog;
  std::string_view callId;
  bool withName = false;
};

struct NamedMailbox {
  std::string id;
  std::optional<std::string> name;
};

// Nothing where no mailbox has that role.
base::JsonReader firstOfRole(const base::JsonReader& mailboxes, std::string_view role);
// The client and the texts of the query outlive the task. Where the account has none of that role it is
// badResponse, after a log line.
async::Task<Result<NamedMailbox>> mailboxOfRole(JMAPClient& client, RoleQuery query);

} // namespace ondrel::jmap
