#include "base/Translation.h"
#include "jmap/mail/ISO8601Date.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/protocol/JMAPReading.h"

#include <unordered_map>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

// Images in the text and the like.
bool isEmbedded(const base::JsonReader& part) {
  return !part["cid"].string().value_or("").empty() || part["disposition"].string() == "inline";
}

void appendAttachments(std::vector<AttachmentInfo>& result, const std::string& emailId,
                       const base::JsonReader& email) {
  const auto subject = email["subject"].string().value_or(base::tr("(No subject)"));
  const auto from = senderText(email);
  // Without a date it sorts last.
  const auto receivedAt =
      parseISO8601Date(email["receivedAt"].string().value_or("")).value_or(Milliseconds::min());
  for (const auto& part : email["attachments"].elements()) {
    const auto blobId = part["blobId"].string();
    if (!blobId || isEmbedded(part))
      continue;
    result.push_back({.id = emailId + "-" + *blobId,
                      .emailId = emailId,
                      .blobId = *blobId,
                      // TRANSLATORS: the name of a file that has none
                      .name = part["name"].string().value_or(base::tr("Untitled")),
                      .type = part["type"].string().value_or("application/octet-stream"),
                      .size = part["size"].wholeNumber().value_or(0),
                      .subject = subject,
                      .from = from,
                      .receivedAt = receivedAt});
  }
}

// Of a reply to Email/query and Email/get.
std::optional<AttachmentPage> attachmentPage(const json::value& reply) {
  const auto query = answer(reply, 0);
  const auto list = answeredList(reply, 1);
  if (!query.object() || !list.array())
    return std::nullopt;
  std::unordered_map<std::string, base::JsonReader> emails;
  for (const auto& email : list.elements())
    if (auto id = email["id"].string())
      emails.insert_or_assign(*std::move(id), email);

  AttachmentPage page;
  page.total = query["total"].wholeNumber().value_or(static_cast<std::int64_t>(list.size()));
  page.emailCount = static_cast<std::int64_t>(query["ids"].size());
  for (const auto& id : query["ids"].strings())
    if (const auto email = emails.find(id); email != emails.end())
      appendAttachments(page.attachments, id, email->second);
  return page;
}

json::object pageRequest(const std::string& accountId, json::object filter, std::int64_t position,
                         std::int64_t limit) {
  const json::object newestFirst{{"property", "receivedAt"}, {"isAscending", false}};
  json::array sort;
  sort.emplace_back(newestFirst);
  json::array calls;
  calls.emplace_back(methodCall("Email/query",
                                {{"accountId", accountId},
                                 {"filter", std::move(filter)},
                                 {"sort", std::move(sort)},
                                 {"position", position},
                                 {"limit", limit},
                                 {"calculateTotal", true}},
                                "q0"));
  calls.emplace_back(methodCall("Email/get",
                                {{"accountId", accountId},
                                 {"#ids", idsOfQuery()},
                                 {"properties", {"id", "subject", "from", "receivedAt", "attachments"}}},
                                "g0"));
  return jmapRequest(std::move(calls));
}

} // namespace

async::Task<Result<AttachmentPage>> MailQueries::fetchAttachments(std::int64_t position, std::int64_t limit) {
  auto account = co_await mailAccount(client_, "fetchAttachments");
  if (!account)
    co_return std::unexpected(std::move(account).error());
  auto token = co_await client_.currentAccessToken();
  if (!token)
    co_return std::unexpected(std::move(token).error());
  // Junk that is listed is better than no list.
  const auto junkId = co_await fetchJunkMailboxId();
  json::object filter{{"hasAttachment", true}};
  if (junkId)
    filter["inMailboxOtherThan"] = {*junkId};
  auto body = pageRequest(account->id, std::move(filter), position, limit);
  const auto reply = co_await client_.send(account->session, *std::move(token), std::move(body));
  if (!reply)
    co_return std::unexpected(reply.error());
  if (!reply->json)
    co_return std::unexpected(reply->json.error());
  auto page = attachmentPage(*reply->json);
  if (!page) {
    networkLogger.error("fetchAttachments: unexpected JMAP response format — body: {}", reply->excerpt(4000));
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return *std::move(page);
}

} // namespace ondrel::jmap
