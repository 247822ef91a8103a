#include "base/Translation.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/mail/MessageURL.h"
#include "jmap/protocol/JMAPReading.h"
#include "settings/AppSettings.h"

#include <boost/json/value_from.hpp>

#include <algorithm>
#include <set>
#include <span>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

constexpr std::size_t chunkSize = 200;

struct Resolved {
  std::string internalId;
  std::string subject;
  std::string mailboxId;
  std::string threadId;
};
using ResolvedByMessageId = std::map<std::string, Resolved>;

json::object chunkRequest(const std::string& accountId, std::span<const std::string> messageIds) {
  json::array conditions;
  for (const auto& id : messageIds)
    conditions.emplace_back(json::object{{"header", {"Message-ID", id}}});
  json::array calls;
  calls.emplace_back(methodCall("Email/query",
                                {{"accountId", accountId},
                                 {"filter", {{"operator", "OR"}, {"conditions", std::move(conditions)}}},
                                 {"limit", messageIds.size()}},
                                "q0"));
  calls.emplace_back(methodCall("Email/get",
                                {{"accountId", accountId},
                                 {"#ids", idsOfQuery()},
                                 {"properties", {"messageId", "subject", "mailboxIds", "threadId"}}},
                                "g0"));
  return jmapRequest(std::move(calls));
}

void resolve(ResolvedByMessageId& resolved, const base::JsonReader& email) {
  auto id = email["id"].string();
  auto messageId = email["messageId"][0].string();
  const auto* mailboxIds = email["mailboxIds"].object();
  auto threadId = email["threadId"].string();
  if (!id || !messageId || !mailboxIds || mailboxIds->empty() || !threadId)
    return;
  resolved.insert_or_assign(*std::move(messageId),
                            Resolved{.internalId = *std::move(id),
                                     .subject = email["subject"].string().value_or(base::tr("(No subject)")),
                                     .mailboxId = mailboxIds->begin()->key(),
                                     .threadId = *std::move(threadId)});
}

std::map<std::string, std::string> namesById(const base::JsonReader& mailboxes) {
  std::map<std::string, std::string> names;
  for (const auto& mailbox : mailboxes.elements()) {
    auto id = mailbox["id"].string();
    auto name = mailbox["name"].string();
    if (id && name)
      names.insert_or_assign(*std::move(id), *std::move(name));
  }
  return names;
}

// Of the mailboxes that are used; empty after a log line when they can't be had.
async::Task<std::map<std::string, std::string>> mailboxNames(JMAPClient& client, MailAccount account,
                                                             std::set<std::string> ids) {
  const auto reply = co_await ask(
      client, account.session,
      jmapRequest("Mailbox/get",
                  {{"accountId", account.id}, {"ids", json::value_from(ids)}, {"properties", {"name"}}},
                  "m0"));
  if (!reply) {
    networkLogger.error("highlightExportInfo: Mailbox/get failed: {}", reply.error().description());
    co_return {};
  }
  auto names = namesById(answeredList(*reply, 0));
  if (names.empty())
    networkLogger.error("highlightExportInfo: could not resolve mailbox names");
  co_return names;
}

} // namespace

async::Task<Result<HighlightExportAnswer>>
MailQueries::highlightExportInfo(std::vector<std::string> messageIds,
                                 std::function<void(std::size_t done)> progress) {
  HighlightExportAnswer result;
  if (messageIds.empty())
    co_return result;
  auto account = co_await mailAccount(client_, "highlightExportInfo");
  if (!account)
    co_return std::unexpected(std::move(account).error());

  ResolvedByMessageId resolved;
  for (std::size_t position = 0; position < messageIds.size(); position += chunkSize) {
    const auto chunk =
        std::span(messageIds).subspan(position, std::min(chunkSize, messageIds.size() - position));
    progress(position);
    const auto reply = co_await ask(client_, account->session, chunkRequest(account->id, chunk));
    if (!reply) {
      if (reply.error().kind == JMAPError::Kind::cancelled)
        co_return std::unexpected(reply.error());
      networkLogger.error("highlightExportInfo: chunk at {} ({} message id(s)) failed: {}", position,
                          chunk.size(), reply.error().description());
      result.unanswered.insert(chunk.begin(), chunk.end());
      continue;
    }
    const auto list = answeredList(*reply, 1);
    if (!list.array()) {
      networkLogger.error("highlightExportInfo: unexpected JMAP response format for chunk at {}", position);
      result.unanswered.insert(chunk.begin(), chunk.end());
      continue;
    }
    for (const auto& email : list.elements())
      resolve(resolved, email);
  }
  progress(messageIds.size());
  if (resolved.empty())
    co_return result;

  std::set<std::string> mailboxIds;
  for (const auto& [messageId, email] : resolved)
    mailboxIds.insert(email.mailboxId);
  const auto names = co_await mailboxNames(client_, *account, std::move(mailboxIds));
  for (const auto& [messageId, email] : resolved) {
    const auto name = names.find(email.mailboxId);
    if (names.empty())
      result.unanswered.insert(messageId);
    if (name == names.end())
      continue;
    auto url = mailPageURL(settings_.baseURL(), name->second,
                           MessageAddress{email.threadId, email.internalId}.pathComponent(),
                           accountParameter(account->id));
    if (url)
      result.found.emplace(messageId, HighlightExportInfo{.subject = email.subject, .url = *std::move(url)});
  }
  co_return result;
}

} // namespace ondrel::jmap
