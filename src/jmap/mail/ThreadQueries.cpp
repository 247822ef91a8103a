#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/protocol/JMAPReading.h"

#include <boost/json/value_from.hpp>

#include <unordered_map>

namespace ondrel::jmap {

namespace json = boost::json;

async::Task<Result<std::vector<ThreadEmailInfo>>> MailQueries::threadEmails(std::string threadId) {
  auto account = co_await mailAccount(client_, "threadEmails");
  if (!account)
    co_return std::unexpected(std::move(account).error());
  const auto threads =
      co_await ask(client_, account->session,
                   jmapRequest("Thread/get", {{"accountId", account->id}, {"ids", {threadId}}}, "t0"));
  if (!threads)
    co_return std::unexpected(threads.error());
  const auto ids = firstListed(*threads, 0)["emailIds"].strings();
  if (ids.empty()) {
    networkLogger.error("threadEmails: unexpected JMAP response format or no emailIds for thread {}",
                        threadId);
    co_return std::unexpected(JMAPError::badResponse());
  }

  const auto emails = co_await ask(
      client_, account->session,
      jmapRequest("Email/get",
                  {{"accountId", account->id}, {"ids", json::value_from(ids)}, {"properties", {"messageId"}}},
                  "e0"));
  if (!emails)
    co_return std::unexpected(emails.error());
  const auto list = answeredList(*emails, 0);
  if (!list.array()) {
    networkLogger.error("threadEmails: unexpected JMAP response format for thread {}", threadId);
    co_return std::unexpected(JMAPError::badResponse());
  }
  std::unordered_map<std::string, std::string> messageIds;
  for (const auto& email : list.elements())
    if (auto id = email["id"].string())
      messageIds.insert_or_assign(*std::move(id), email["messageId"][0].string().value_or(""));
  // The order of the thread, whatever the order of the list.
  std::vector<ThreadEmailInfo> result;
  for (const auto& id : ids)
    if (const auto found = messageIds.find(id); found != messageIds.end())
      result.push_back({.internalId = id, .messageId = found->second});
  co_return result;
}

} // namespace ondrel::jmap
