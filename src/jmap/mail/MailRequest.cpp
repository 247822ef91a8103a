#include "jmap/mail/MailRequest.h"

namespace ondrel::jmap {

namespace json = boost::json;

json::array methodCall(std::string_view method, json::object arguments, std::string_view callId) {
  return {method, std::move(arguments), callId};
}

json::object jmapRequest(json::array methodCalls, std::string_view capability) {
  return {{"using", {coreCapability, capability}}, {"methodCalls", std::move(methodCalls)}};
}

json::object jmapRequest(std::string_view method, json::object arguments, std::string_view callId) {
  json::array calls;
  calls.emplace_back(methodCall(method, std::move(arguments), callId));
  return jmapRequest(std::move(calls));
}

json::object idsOfQuery() {
  return {{"resultOf", "q0"}, {"name", "Email/query"}, {"path", "/ids"}};
}

async::Task<Result<MailAccount>> mailAccount(JMAPClient& client, std::string_view operation) {
  auto session = co_await client.fetchSessionData();
  if (!session)
    co_return std::unexpected(std::move(session).error());
  auto id = mailAccountId(*session);
  if (!id) {
    networkLogger.error("{}: no mail account ID in JMAP session", operation);
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return MailAccount{*std::move(session), *std::move(id)};
}

async::Task<Result<JMAPReply>> sendRequest(JMAPClient& client, JMAPSessionData session, json::object body) {
  auto token = co_await client.currentAccessToken();
  if (!token)
    co_return std::unexpected(std::move(token).error());
  co_return co_await client.send(std::move(session), *std::move(token), std::move(body));
}

async::Task<Result<json::value>> ask(JMAPClient& client, JMAPSessionData session, json::object body) {
  auto reply = co_await sendRequest(client, std::move(session), std::move(body));
  if (!reply)
    co_return std::unexpected(std::move(reply).error());
  co_return std::move(reply->json);
}

} // namespace ondrel::jmap
