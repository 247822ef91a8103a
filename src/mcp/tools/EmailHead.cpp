#include "mcp/tools/EmailHead.h"

#include "base/Text.h"
#include "jmap/mail/ISO8601Date.h"
#include "jmap/mail/MailListing.h"
#include "platform/TextFormatting.h"

#include <fmt/format.h>

namespace ondrel::mcp::tools {

namespace {

std::string senderText(const jmap::EmailSummary& email) {
  if (auto name = lineText(email.senderName); name && !name->empty())
    return *std::move(name);
  return lineText(email.senderAddress).value_or("Unknown");
}

std::string dateText(const jmap::EmailSummary& email, const platform::TextFormatting& formatting) {
  auto text = lineText(email.receivedAt).value_or("");
  const auto date = jmap::parseISO8601Date(text);
  return date ? formatting.mediumDateShortTime(*date) : std::move(text);
}

} // namespace

std::optional<std::string> lineText(const std::optional<std::string>& text) {
  return text ? std::optional(base::displayLine(*text)) : std::nullopt;
}

std::string emailHead(std::string_view id, const jmap::EmailSummary& email,
                      const platform::TextFormatting& formatting) {
  return fmt::format("ID: {}\nFrom: {}\nSubject: {}\nDate: {}", id, senderText(email),
                     lineText(email.subject).value_or("(no subject)"), dateText(email, formatting));
}

} // namespace ondrel::mcp::tools
