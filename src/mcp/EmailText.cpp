#include "mcp/EmailText.h"

#include "base/Text.h"
#include "jmap/ISO8601Date.h"
#include "jmap/JMAPReading.h"
#include "mcp/HtmlText.h"
#include "mcp/TextPage.h"
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

// A member that stands on a line of its own. It is the sender's to choose: with line feeds in it, it could
// look like lines of ours, and so like another email.
std::optional<std::string> lineMember(const json::object& object, std::string_view key) {
  const auto text = jmap::stringMember(object, key);
  return text ? std::optional(base::displayLine(*text)) : std::nullopt;
}

std::string senderText(const json::object& email) {
  const auto* sender = firstOfObjects(email, "from");
  if (!sender)
    return "Unknown";
  if (auto name = lineMember(*sender, "name"); name && !name->empty())
    return *std::move(name);
  return lineMember(*sender, "email").value_or("Unknown");
}

std::string subjectText(const json::object& email) {
  return lineMember(email, "subject").value_or("(no subject)");
}

std::string dateText(const json::object& email, const platform::TextFormatting& formatting) {
  auto text = lineMember(email, "receivedAt").value_or("");
  const auto date = jmap::parseISO8601Date(text);
  return date ? formatting.mediumDateShortTime(*date) : std::move(text);
}

std::string previewText(const json::object& email, std::size_t longest,
                        const platform::TextFormatting& formatting) {
  auto text = lineMember(email, "preview").value_or("");
  const auto start = formatting.firstCharacters(text, longest);
  return start.size() < text.size() ? std::string(start) + "…" : std::move(text);
}

std::string bodyText(const json::object& email) {
  constexpr auto none = "(no plain text body)";
  const auto* part = firstOfObjects(email, "textBody");
  const auto partId = part ? jmap::stringMember(*part, "partId") : std::nullopt;
  const auto* values = partId ? jmap::objectMember(email, "bodyValues") : nullptr;
  const auto* value = values ? jmap::objectMember(*values, *partId) : nullptr;
  auto text = value ? jmap::stringMember(*value, "value") : std::nullopt;
  if (!text)
    return none;
  // The server lists the HTML part here where a message has no other text.
  return jmap::stringMember(*part, "type") == "text/html" ? textOfHtml(*text) : *std::move(text);
}

} // namespace

std::optional<std::string> formatEmailSummary(const json::object& email, std::size_t longestPreview,
                                              const platform::TextFormatting& formatting) {
  const auto id = lineMember(email, "id");
  if (!id)
    return std::nullopt;
  return fmt::format("ID: {}\nFrom: {}\nSubject: {}\nDate: {}\nPreview: {}", *id, senderText(email),
                     subjectText(email), dateText(email, formatting),
                     previewText(email, longestPreview, formatting));
}

std::string formatEmail(const json::object& email, std::string_view id, std::int64_t offset,
                        const platform::TextFormatting& formatting) {
  return fmt::format("ID: {}\nFrom: {}\nSubject: {}\nDate: {}\n\n{}", id, senderText(email),
                     subjectText(email), dateText(email, formatting), textPage(bodyText(email), offset));
}

std::optional<std::string> formatMailbox(const json::object& mailbox) {
  const auto name = lineMember(mailbox, "name");
  if (!name)
    return std::nullopt;
  const auto role = lineMember(mailbox, "role");
  return fmt::format("{}{} — {} emails, {} unread", *name, role ? fmt::format(" [{}]", *role) : "",
                     jmap::integerMember(mailbox, "totalEmails").value_or(0),
                     jmap::integerMember(mailbox, "unreadEmails").value_or(0));
}

} // namespace ondrel::mcp
