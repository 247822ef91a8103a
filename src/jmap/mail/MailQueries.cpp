#include "jmap/mail/MailQueries.h"

#include "base/Translation.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/protocol/JMAPReading.h"
#include "settings/AppSettings.h"

namespace ondrel::jmap {

namespace json = boost::json;

namespace {

// A server looks for a text within the header (RFC 8621, section 4.4.1): other messages may hold it too.
constexpr int mostCandidates = 50;

// Values of "messageId" have none (RFC 8621, section 4.1.2.5).
std::string_view withoutBrackets(std::string_view messageId) {
  const bool hasBoth = messageId.starts_with('<') && messageId.ends_with('>');
  return hasBoth ? messageId.substr(1, messageId.size() - 2) : messageId;
}

} // namespace

MailQueries::MailQueries(JMAPClient& client, settings::AppSettings& settings, BadgeRefresh badgeRefresh)
    : client_(client), settings_(settings), badgeRefresh_(std::move(badgeRefresh)) {
}

async::Task<Result<EmailInfo>> MailQueries::emailInfo(std::string emailId) {
  auto account = co_await mailAccount(client_, "emailInfo");
  if (!account)
    co_return std::unexpected(std::move(account).error());
  const auto reply = co_await ask(client_, account->session,
                                  jmapRequest("Email/get",
                                              {{"accountId", account->id},
                                               {"ids", {emailId}},
                                               {"properties", {"messageId", "subject"}},
                                               {"fetchHTMLBodyValues", false},
                                               {"fetchAllBodyValues", false}},
                                              "h0"));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto email = firstListed(*reply, 0);
  if (!email.object()) {
    networkLogger.error("emailInfo: unexpected JMAP response format");
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return EmailInfo{.subject = email["subject"].string().value_or(base::tr("(No subject)")),
                      .messageId = email["messageId"][0].string().value_or(emailId)};
}

async::Task<Result<std::string>> MailQueries::findEmailId(std::string messageId) {
  auto account = co_await mailAccount(client_, "findEmailId");
  if (!account)
    co_return std::unexpected(std::move(account).error());
  json::array calls;
  calls.emplace_back(methodCall("Email/query",
                                {{"accountId", account->id},
                                 {"filter", {{"header", {"Message-ID", messageId}}}},
                                 {"limit", mostCandidates}},
                                "q0"));
  calls.emplace_back(methodCall(
      "Email/get", {{"accountId", account->id}, {"#ids", idsOfQuery()}, {"properties", {"id", "messageId"}}},
      "g0"));
  const auto reply = co_await ask(client_, account->session, jmapRequest(std::move(calls)));
  if (!reply)
    co_return std::unexpected(reply.error());
  for (const auto& email : answeredList(*reply, 1).elements())
    if (email["messageId"][0].string() == withoutBrackets(messageId))
      if (auto id = email["id"].string())
        co_return *std::move(id);
  networkLogger.error("findEmailId: unexpected JMAP response format or no matching email");
  co_return std::unexpected(JMAPError::badResponse());
}

async::Task<Result<bool>> MailQueries::fetchInLabelsMode() {
  auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(std::move(session).error());
  const auto& capability = settings_.site().devUserCapability;
  const auto account = session->primaryAccounts.find(capability);
  if (account == session->primaryAccounts.end()) {
    networkLogger.error("fetchInLabelsMode: no dev/user account ID in JMAP session");
    co_return std::unexpected(JMAPError::badResponse());
  }
  json::array calls;
  calls.emplace_back(
      methodCall("ClientPreferences/get", {{"accountId", account->second}, {"ids", nullptr}}, "c0"));
  const auto reply = co_await ask(client_, *session, jmapRequest(std::move(calls), capability));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto inLabelsMode = firstListed(*reply, 0)["inLabelsMode"].boolean();
  if (!inLabelsMode) {
    networkLogger.error("fetchInLabelsMode: unexpected JMAP response format");
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return *inLabelsMode;
}

} // namespace ondrel::jmap
