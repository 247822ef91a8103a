#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::jmap {

// The web application's page of a mailbox and something in it: a thread's message ("T1.M2") or just an email
// id. The account's name in addresses goes in `accountParameter`. Absent when that makes no URL.
std::optional<std::string> mailPageURL(std::string_view webAppBaseURL, std::string_view mailboxName,
                                       std::string_view page, std::string_view accountParameter);

} // namespace ondrel::jmap
