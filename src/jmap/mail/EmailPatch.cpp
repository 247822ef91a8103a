#include "jmap/mail/EmailPatch.h"

#include "base/Json.h"
#include "jmap/protocol/JMAPReading.h"

namespace ondrel::jmap {

namespace json = boost::json;

std::string membership(const std::string& mailboxId) {
  return "mailboxIds/" + mailboxId;
}

async::Task<Result<json::object>> currentEmail(JMAPClient& client, MailAccount account, std::string emailId,
                                               json::array properties) {
  auto question = jmapRequest(
      "Email/get", {{"accountId", account.id}, {"ids", {emailId}}, {"properties", std::move(properties)}},
      "g0");
  const auto found = co_await ask(client, std::move(account.session), std::move(question));
  if (!found)
    co_return std::unexpected(found.error());
  const auto email = firstListed(*found, 0);
  if (!email.object())
    co_return std::unexpected(JMAPError::refused("the message is no longer there"));
  co_return *email.object();
}

async::Task<Result<void>> patchEmail(JMAPClient& client, MailAccount account, std::string emailId,
                                     json::object patch, std::string callId) {
  auto body = jmapRequest("Email/set", {{"accountId", account.id}, {"update", {{emailId, std::move(patch)}}}},
                          callId);
  const auto reply = co_await sendRequest(client, std::move(account.session), std::move(body));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto arguments = reply->json ? answer(*reply->json, 0) : base::JsonReader();
  if (const auto* reason = arguments["notUpdated"][emailId].value())
    co_return std::unexpected(JMAPError::refused(reply->withoutSecrets(base::jsonText(*reason))));
  co_return {};
}

} // namespace ondrel::jmap
