#pragma once

#include "platform/NotificationCenter.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::jmap {

// Emails that the user is to be told of, and what their addresses in the web application are made of.
struct NewMail {
  struct Email {
    std::optional<std::string> id;
    std::string sender;
    std::string subject;
  };

  std::vector<Email> emails = {};
  std::string inboxName = {};
  std::string accountParam = {};
};

// More in one go are told in one notification.
inline constexpr std::size_t mostNotifications = 5;

// Title, body and lines of a notification for several emails: how many, from whom, and what the first ones
// are.
platform::NotificationContent summaryOf(const NewMail& mail);

} // namespace ondrel::jmap
