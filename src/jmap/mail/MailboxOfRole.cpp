#include "jmap/mail/MailboxOfRole.h"

#include "jmap/protocol/JMAPReading.h"

namespace ondrel::jmap {

namespace json = boost::json;

base::JsonReader firstOfRole(const base::JsonReader& mailboxes, std::string_view role) {
  for (const auto& mailbox : mailboxes.elements())
    if (mailbox["role"].string() == role)
      return mailbox;
  return {};
}

async::Task<Result<NamedMailbox>> mailboxOfRole(JMAPClient& client, RoleQuery query) {
  auto account = co_await mailAccount(client, query.operation);
  if (!account)
    co_return std::unexpected(std::move(account).error());
  json::array properties{"id", "role"};
  if (query.withName)
    properties.emplace_back("name");
  const auto reply = co_await ask(
      client, account->session,
      jmapRequest("Mailbox/get", {{"accountId", account->id}, {"properties", std::move(properties)}},
                  query.callId));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto mailbox = firstOfRole(answeredList(*reply, 0), query.role);
  auto id = mailbox["id"].string();
  if (!id) {
    networkLogger.error("{}: could not find {} in Mailbox/get response", query.operation, query.roleInLog);
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return NamedMailbox{*std::move(id), mailbox["name"].string()};
}

} // namespace ondrel::jmap
