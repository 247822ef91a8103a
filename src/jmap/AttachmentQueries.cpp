#include "jmap/ISO8601Date.h"
#include "jmap/JMAPReading.h"
#include "jmap/MailQueries.h"
#include "jmap/MailRequest.h"

#include <unordered_map>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

// Images in the text and the like.
bool isEmbedded(const json::object& part) {
  const auto cid = stringMember(part, "cid");
  return (cid && !cid->empty()) || stringMember(part, "disposition") == "inline";
}

void appendAttachments(std::vector<AttachmentInfo>& result, const std::string& emailId,
                       const json::object& email) {
  const auto* parts = arrayMember(email, "attachments");
  if (!parts)
    return;
  const auto subject = stringMember(email, "subject").value_or("(No subject)");
  const auto from = senderText(email);
  // Without a date it sorts last.
  const auto receivedAt =
      parseISO8601Date(stringMember(email, "receivedAt").value_or("")).value_or(Milliseconds::min());
  for (const auto* part : objects(*parts)) {
    const auto blobId = stringMember(*part, "blobId");
    if (!blobId || isEmbedded(*part))
      continue;
    result.push_back({.id = emailId + "-" + *blobId,
                      .emailId = emailId,
                      .blobId = *blobId,
                      .name = stringMember(*part, "name").value_or("Untitled"),
                      .type = stringMember(*part, "type").value_or("application/octet-stream"),
                      .size = integerMember(*part, "size").value_or(0),
                      .subject = subject,
                      .from = from,
                      .receivedAt = receivedAt});
  }
}

// Of a reply to Email/query and Email/get.
std::optional<AttachmentPage> attachmentPage(const json::value& reply) {
  const auto* query = answer(reply, 0);
  const auto* list = answeredList(reply, 1);
  if (!query || !list)
    return std::nullopt;
  std::unordered_map<std::string, const json::object*> emails;
  for (const auto* email : objects(*list))
    if (auto id = stringMember(*email, "id"))
      emails.insert_or_assign(*std::move(id), email);

  AttachmentPage page;
  page.total = integerMember(*query, "total").value_or(static_cast<std::int64_t>(list->size()));
  const auto* ids = arrayMember(*query, "ids");
  if (!ids)
    return page;
  page.emailCount = static_cast<std::int64_t>(ids->size());
  for (const auto& id : strings(*ids))
    if (const auto email = emails.find(id); email != emails.end())
      appendAttachments(page.attachments, id, *email->second);
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
