#include "mcp/MCPJMAPBridge.h"

#include "jmap/ISO8601Date.h"
#include "jmap/JMAPReading.h"
#include "jmap/MailQueries.h"
#include "jmap/MailRequest.h"
#include "mcp/EmailText.h"

#include <boost/json/array.hpp>
#include <fmt/ranges.h>

#include <algorithm>
#include <functional>
#include <map>
#include <ranges>
#include <utility>
#include <vector>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

using Answer = std::expected<std::vector<json::object>, std::string>;

std::unexpected<std::string> badResponse() {
  return std::unexpected<std::string>("Unexpected JMAP response format.");
}

ToolOutcome textOutcome(std::string text) {
  return std::vector{MCPContent{.text = std::move(text)}};
}

bool hasCallId(const json::value& response, std::string_view callId) {
  const auto* parts = response.if_array();
  const auto* id = parts && parts->size() > 2 ? (*parts)[2].if_string() : nullptr;
  return id && *id == callId;
}

// The arguments of the first answer with that call id; answers may come in any number and order.
const json::object* answerTo(const json::value& reply, std::string_view callId) {
  const auto* top = reply.if_object();
  const auto* responses = top ? jmap::arrayMember(*top, "methodResponses") : nullptr;
  if (!responses)
    return nullptr;
  const auto found = std::ranges::find_if(
      *responses, [&](const json::value& response) { return hasCallId(response, callId); });
  return found != responses->end() ? found->get_array()[1].if_object() : nullptr;
}

Answer listedObjects(const json::value& reply, std::string_view callId) {
  const auto* arguments = answerTo(reply, callId);
  const auto* list = arguments ? jmap::arrayMember(*arguments, "list") : nullptr;
  if (!list)
    return badResponse();
  std::vector<json::object> result;
  for (const auto& element : *list) {
    if (!element.is_object())
      return badResponse();
    result.push_back(element.get_object());
  }
  return result;
}

using MakeCalls = std::move_only_function<json::array(const std::string& accountId)>;

// Makes the calls for the user's mail account, sends them in one request and gives the list that answers one
// of them.
async::Task<Answer> listedBy(jmap::JMAPClient& client, std::string callId, MakeCalls makeCalls) {
  const bool nobody = co_await client.isSignInShown();
  if (nobody)
    co_return std::unexpected(jmap::JMAPError::notAuthenticated().description());
  auto session = co_await client.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error().description());
  const auto accountId = jmap::mailAccountId(*session);
  if (!accountId)
    co_return std::unexpected<std::string>("No mail account found in the JMAP session.");
  auto request = jmap::jmapRequest(makeCalls(*accountId));
  const auto reply = co_await jmap::ask(client, *std::move(session), std::move(request));
  if (!reply)
    co_return std::unexpected(reply.error().description());
  co_return listedObjects(*reply, callId);
}

// The dates that the tool's description invites and JMAP doesn't take, as the UTCDate (RFC 8620, section 1.4)
// that it asks for: a day alone begins at midnight, UTC, and an offset is counted in. All else goes as it is.
std::optional<std::string> utcDate(std::optional<std::string> given) {
  if (!given || given->ends_with('Z'))
    return given;
  const auto isDay = given->size() == std::string_view("2025-01-01").size();
  const auto date = jmap::parseISO8601Date(isDay ? *given + "T00:00:00Z" : *given);
  return date ? jmap::formatUTCDate(*date) : std::move(given);
}

// A FilterCondition (RFC 8621, section 4.4.1), or an operator over several; absent for no condition.
std::optional<json::object> filter(const EmailSearch& search) {
  const std::pair<std::string_view, std::optional<std::string>> given[] = {{"after", utcDate(search.after)},
                                                                           {"before", utcDate(search.before)},
                                                                           {"from", search.from},
                                                                           {"subject", search.subject}};
  json::array conditions;
  for (const auto& [key, value] : given)
    if (value)
      conditions.emplace_back(json::object{{key, *value}});
  if (conditions.empty())
    return std::nullopt;
  if (conditions.size() == 1)
    return conditions.front().get_object();
  return json::object{{"operator", "AND"}, {"conditions", std::move(conditions)}};
}

json::array searchCalls(const EmailSearch& search, const std::string& accountId) {
  json::object query{{"accountId", accountId},
                     {"sort", json::array{json::object{{"property", "receivedAt"}, {"isAscending", false}}}},
                     {"limit", std::clamp<std::int64_t>(search.limit, 1, MCPJMAPBridge::mostEmails)}};
  if (auto conditions = filter(search))
    query["filter"] = *std::move(conditions);
  json::object get{{"accountId", accountId},
                   {"#ids", jmap::idsOfQuery()},
                   {"properties", {"id", "subject", "from", "receivedAt", "preview"}}};
  json::array calls;
  calls.emplace_back(jmap::methodCall("Email/query", std::move(query), "q0"));
  calls.emplace_back(jmap::methodCall("Email/get", std::move(get), "g0"));
  return calls;
}

json::array oneCall(std::string_view method, json::object arguments, std::string_view callId) {
  json::array calls;
  calls.emplace_back(jmap::methodCall(method, std::move(arguments), callId));
  return calls;
}

} // namespace

MCPJMAPBridge::MCPJMAPBridge(jmap::JMAPClient& client, jmap::MailQueries& mail,
                             const platform::TextFormatting& formatting, MessageWindow window)
    : client_(client), mail_(mail), formatting_(formatting), window_(std::move(window)) {
}

async::Task<ToolOutcome> MCPJMAPBridge::searchEmails(EmailSearch search) {
  const auto emails = co_await listedBy(
      client_, "g0", [search](const std::string& accountId) { return searchCalls(search, accountId); });
  if (!emails)
    co_return std::unexpected(emails.error());
  if (emails->empty())
    co_return textOutcome("No emails found matching the search criteria.");
  std::vector<std::string> blocks;
  for (const auto& email : *emails)
    if (auto block = formatEmailSummary(email, longestPreview, formatting_))
      blocks.push_back(*std::move(block));
  co_return textOutcome(fmt::format("{}", fmt::join(blocks, "\n\n---\n\n")));
}

async::Task<ToolOutcome> MCPJMAPBridge::getEmail(std::string id, std::int64_t offset) {
  const auto emails = co_await listedBy(client_, "g0", [id](const std::string& accountId) {
    return oneCall("Email/get",
                   {{"accountId", accountId},
                    {"ids", json::array{id}},
                    {"properties", {"id", "subject", "from", "receivedAt", "textBody", "bodyValues"}},
                    {"fetchTextBodyValues", true}},
                   "g0");
  });
  if (!emails)
    co_return std::unexpected(emails.error());
  if (emails->empty())
    co_return badResponse();
  co_return textOutcome(formatEmail(emails->front(), id, offset, formatting_));
}

async::Task<ToolOutcome> MCPJMAPBridge::listMailboxes() {
  const auto mailboxes = co_await listedBy(client_, "m0", [](const std::string& accountId) {
    return oneCall("Mailbox/get",
                   {{"accountId", accountId},
                    {"ids", nullptr},
                    {"properties", {"id", "name", "role", "totalEmails", "unreadEmails"}}},
                   "m0");
  });
  if (!mailboxes)
    co_return std::unexpected(mailboxes.error());
  // By bytes, which is the order of the code points.
  std::multimap<std::string, std::string> lines;
  for (const auto& mailbox : *mailboxes)
    if (auto line = formatMailbox(mailbox))
      lines.emplace(jmap::stringMember(mailbox, "name").value_or(""), *std::move(line));
  co_return textOutcome(fmt::format("{}", fmt::join(lines | std::views::values, "\n")));
}

async::Task<ToolOutcome> MCPJMAPBridge::openInOndrel(std::string id) {
  const bool nobody = co_await client_.isSignInShown();
  if (nobody)
    co_return std::unexpected(jmap::JMAPError::notAuthenticated().description());
  const auto url = co_await mail_.messageURL(id);
  if (!url)
    co_return std::unexpected(url.error().description());
  window_.openURL(*url);
  window_.activate();
  co_return textOutcome(fmt::format("Opened email {} in Ondrel.", id));
}

} // namespace ondrel::mcp
