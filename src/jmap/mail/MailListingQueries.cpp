#include "jmap/mail/ISO8601Date.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/protocol/JMAPReading.h"

#include <algorithm>
#include <utility>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

using Listed = Result<std::vector<json::object>>;

// The arguments of the first answer with that call id; answers may come in any number and order.
base::JsonReader answerTo(const json::value& reply, std::string_view callId) {
  for (const auto& response : base::JsonReader(reply)["methodResponses"].elements())
    if (response[2].string() == callId)
      return response[1];
  return {};
}

// Nothing but objects may be in the list.
Listed listedObjects(const json::value& reply, std::string_view callId) {
  const auto list = answerTo(reply, callId)["list"];
  if (!list.array())
    return std::unexpected(JMAPError::badResponse());
  std::vector<json::object> result;
  for (const auto& element : list.elements()) {
    if (!element.object())
      return std::unexpected(JMAPError::badResponse());
    result.push_back(*element.object());
  }
  return result;
}

async::Task<Result<MailAccount>> listingAccount(JMAPClient& client) {
  auto session = co_await client.fetchSessionData();
  if (!session)
    co_return std::unexpected(std::move(session).error());
  auto id = mailAccountId(*session);
  if (!id)
    co_return std::unexpected(JMAPError::noMailAccount());
  co_return MailAccount{*std::move(session), *std::move(id)};
}

// The list in the answer to one call of a request.
async::Task<Listed> listedBy(JMAPClient& client, JMAPSessionData session, json::object request,
                             std::string callId) {
  const auto reply = co_await ask(client, std::move(session), std::move(request));
  if (!reply)
    co_return std::unexpected(reply.error());
  co_return listedObjects(*reply, callId);
}

// The dates that people write and JMAP doesn't take, as the UTCDate (RFC 8620, section 1.4) that it asks for:
// a day alone begins at midnight, UTC, and an offset is counted in. All else goes as it is.
std::optional<std::string> utcDate(std::optional<std::string> given) {
  if (!given || given->ends_with('Z'))
    return given;
  const auto isDay = given->size() == std::string_view("2025-01-01").size();
  const auto date = parseISO8601Date(isDay ? *given + "T00:00:00Z" : *given);
  return date ? formatUTCDate(*date) : std::move(given);
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
                     {"limit", search.limit}};
  if (auto conditions = filter(search))
    query["filter"] = *std::move(conditions);
  json::object get{{"accountId", accountId},
                   {"#ids", idsOfQuery()},
                   {"properties", {"id", "subject", "from", "receivedAt", "preview"}}};
  json::array calls;
  calls.emplace_back(methodCall("Email/query", std::move(query), "q0"));
  calls.emplace_back(methodCall("Email/get", std::move(get), "g0"));
  return calls;
}

// The first element, of an array that holds at least one object and nothing else.
base::JsonReader firstOfObjects(const base::JsonReader& array) {
  const auto isObject = [](const base::JsonReader& element) { return element.object() != nullptr; };
  return std::ranges::all_of(array.elements(), isObject) ? array[0] : base::JsonReader();
}

EmailSummary readSummary(const base::JsonReader& email) {
  const auto sender = firstOfObjects(email["from"]);
  return {.id = email["id"].string(),
          .senderName = sender["name"].string(),
          .senderAddress = sender["email"].string(),
          .subject = email["subject"].string(),
          .receivedAt = email["receivedAt"].string(),
          .preview = email["preview"].string()};
}

std::optional<EmailBody> readBody(const base::JsonReader& email) {
  const auto part = firstOfObjects(email["textBody"]);
  const auto partId = part["partId"].string();
  auto text = partId ? email["bodyValues"][*partId]["value"].string() : std::nullopt;
  if (!text)
    return std::nullopt;
  return EmailBody{.text = *std::move(text), .isHTML = part["type"].string() == "text/html"};
}

MailboxSummary readMailbox(const base::JsonReader& mailbox) {
  return {.name = mailbox["name"].string(),
          .role = mailbox["role"].string(),
          .totalEmails = mailbox["totalEmails"].wholeNumber().value_or(0),
          .unreadEmails = mailbox["unreadEmails"].wholeNumber().value_or(0)};
}

} // namespace

async::Task<Result<std::vector<EmailSummary>>> MailQueries::searchEmails(EmailSearch search) {
  auto account = co_await listingAccount(client_);
  if (!account)
    co_return std::unexpected(std::move(account).error());
  const auto emails =
      co_await listedBy(client_, account->session, jmapRequest(searchCalls(search, account->id)), "g0");
  if (!emails)
    co_return std::unexpected(emails.error());
  std::vector<EmailSummary> result;
  for (const auto& email : *emails)
    result.push_back(readSummary(base::JsonReader(email)));
  co_return result;
}

async::Task<Result<FullEmail>> MailQueries::fullEmail(std::string emailId) {
  auto account = co_await listingAccount(client_);
  if (!account)
    co_return std::unexpected(std::move(account).error());
  auto request =
      jmapRequest("Email/get",
                  {{"accountId", account->id},
                   {"ids", json::array{emailId}},
                   {"properties", {"id", "subject", "from", "receivedAt", "textBody", "bodyValues"}},
                   {"fetchTextBodyValues", true}},
                  "g0");
  const auto emails = co_await listedBy(client_, account->session, std::move(request), "g0");
  if (!emails)
    co_return std::unexpected(emails.error());
  if (emails->empty())
    co_return std::unexpected(JMAPError::badResponse());
  const base::JsonReader email(emails->front());
  co_return FullEmail{.summary = readSummary(email), .body = readBody(email)};
}

async::Task<Result<std::vector<MailboxSummary>>> MailQueries::listMailboxes() {
  auto account = co_await listingAccount(client_);
  if (!account)
    co_return std::unexpected(std::move(account).error());
  auto request = jmapRequest("Mailbox/get",
                             {{"accountId", account->id},
                              {"ids", nullptr},
                              {"properties", {"id", "name", "role", "totalEmails", "unreadEmails"}}},
                             "m0");
  const auto mailboxes = co_await listedBy(client_, account->session, std::move(request), "m0");
  if (!mailboxes)
    co_return std::unexpected(mailboxes.error());
  std::vector<MailboxSummary> result;
  for (const auto& mailbox : *mailboxes)
    result.push_back(readMailbox(base::JsonReader(mailbox)));
  co_return result;
}

} // namespace ondrel::jmap
