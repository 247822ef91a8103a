#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ondrel::jmap {

// Mail as a reader outside the program asks for it and sees it. What the server left out, or wrote in another
// type, is absent; texts are as they came.

struct EmailSearch {
  // Dates: a day, or a date with any offset. What is no date goes to the server as it is.
  std::optional<std::string> after{};
  std::optional<std::string> before{};
  std::optional<std::string> from{};
  std::optional<std::string> subject{};
  std::int64_t limit = 20;
};

struct EmailSummary {
  std::optional<std::string> id;
  // Of the first sender.
  std::optional<std::string> senderName;
  std::optional<std::string> senderAddress;
  std::optional<std::string> subject;
  std::optional<std::string> receivedAt;
  std::optional<std::string> preview;
};

// The first text part of an email.
struct EmailBody {
  std::string text;
  bool isHTML = false; // where a message has no other text
};

struct FullEmail {
  EmailSummary summary;
  std::optional<EmailBody> body;
};

struct MailboxSummary {
  std::optional<std::string> name;
  std::optional<std::string> role;
  std::int64_t totalEmails = 0;
  std::int64_t unreadEmails = 0;
};

} // namespace ondrel::jmap
