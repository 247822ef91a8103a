#include "mcp/EmailText.h"

#include "jmap/ISO8601Date.h"
#include "jmap/JMAPReading.h"
#include "platform/TextFormatting.h"

#include <boost/json/object.hpp>
#include <fmt/format.h>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

// The first element, of an array that holds at least one object and nothing else.
const json::object* firstOfObjects(const json::object& object, std::string_view key) {
  const auto* array = jmap::arrayMember(object, key);
  const auto elements = array ? jmap::objects(*array) : std::vector<const json::object*>();
  return !elements.empty() && elements.size() == array->size() ? elements.front() : nullptr;
}

std::string senderText(const json::object& email) {
  const auto* sender = firstOfObjects(email, "from");
  if (!sender)
    return "Unknown";
  if (auto name = jmap::stringMember(*sender, "name"); name && !name->empty())
    return *std::move(name);
  return jmap::stringMember(*sender, "email").value_or("Unknown");
}

std::string subjectText(const json::object& email) {
  return jmap::stringMember(email, "subject").value_or("(no subject)");
}

std::string dateText(const json::object& email, const platform::TextFormatting& formatting) {
  auto text = jmap::stringMember(email, "receivedAt").value_or("");
  const auto date = jmap::parseISO8601Date(text);
  return date ? formatting.mediumDateShortTime(*date) : std::move(text);
}

std::string previewText(const json::object& email, std::size_t longest,
                        const platform::TextFormatting& formatting) {
  auto text = jmap::stringMember(email, "preview").value_or("");
  const auto start = formatting.firstCharacters(text, longest);
  return start.size() < text.size() ? std::string(start) + "…" : std::move(text);
}

std::string bodyText(const json::object& email) {
  constexpr auto none = "(no plain text body)";
  const auto* part = firstOfObjects(email, "textBody");
  const auto partId = part ? jmap::stringMember(*part, "partId") : std::nullopt;
  const auto* values = partId ? jmap::objectMember(email, "bodyValues") : nullptr;
  const auto* value = values ? jmap::objectMember(*values, *partId) : nullptr;
  return value ? jmap::stringMember(*value, "value").value_or(none) : none;
}

} // namespace

std::optional<std::string> formatEmailSummary(const json::object& email, std::size_t longestPreview,
                                              const platform::TextFormatting& formatting) {
  const auto id = jmap::stringMember(email, "id");
  if (!id)
    return std::nullopt;
  return fmt::format("ID: {}\nFrom: {}\nSubject: {}\nDate: {}\nPreview: {}", *id, senderText(email),
                     subjectText(email), dateText(email, formatting),
                     previewText(email, longestPreview, formatting));
}

std::string formatEmail(const json::object& email, std::string_view id,
                        const platform::TextFormatting& formatting) {
  return fmt::format("ID: {}\nFrom: {}\nSubject: {}\nDate: {}\n\n{}", id, senderText(email),
                     subjectText(email), dateText(email, formatting), bodyText(email));
}

std::optional<std::string> formatMailbox(const json::object& mailbox) {
  const auto name = jmap::stringMember(mailbox, "name");
  if (!name)
    return std::nullopt;
  const auto role = jmap::stringMember(mailbox, "role");
  return fmt::format("{}{} — {} emails, {} unread", *name, role ? fmt::format(" [{}]", *role) : "",
                     jmap::integerMember(mailbox, "totalEmails").value_or(0),
                     jmap::integerMember(mailbox, "unreadEmails").value_or(0));
}

} // namespace ondrel::mcp
