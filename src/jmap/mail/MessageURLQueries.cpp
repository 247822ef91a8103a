#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/mail/MessageURL.h"
#include "jmap/protocol/JMAPReading.h"
#include "settings/AppSettings.h"

namespace ondrel::jmap {

async::Task<Result<MailboxAndThread>> MailQueries::findMailboxNameAndThreadId(std::string emailId) {
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  const auto accountId = mailAccountId(*session);
  if (!accountId)
    co_return std::unexpected(JMAPError::badResponse());
  const auto emails = co_await ask(
      client_, *session,
      jmapRequest("Email/get",
                  {{"accountId", *accountId}, {"ids", {emailId}}, {"properties", {"mailboxIds", "threadId"}}},
                  "e0"));
  if (!emails)
    co_return std::unexpected(emails.error());
  const auto email = firstListed(*emails, 0);
  const auto* mailboxIds = email["mailboxIds"].object();
  const auto threadId = email["threadId"].string();
  if (!mailboxIds || mailboxIds->empty() || !threadId) {
    networkLogger.error("findMailboxNameAndThreadId: could not parse mailboxIds/threadId for email {}",
                        emailId);
    co_return std::unexpected(JMAPError::badResponse());
  }

  const auto mailboxes = co_await ask(
      client_, *session,
      jmapRequest(
          "Mailbox/get",
          {{"accountId", *accountId}, {"ids", {mailboxIds->begin()->key()}}, {"properties", {"name"}}},
          "m0"));
  if (!mailboxes)
    co_return std::unexpected(mailboxes.error());
  const auto name = firstListed(*mailboxes, 0)["name"].string();
  if (!name) {
    networkLogger.error("findMailboxNameAndThreadId: could not resolve mailbox name for email {}", emailId);
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return MailboxAndThread{.mailboxName = *name, .threadId = *threadId};
}

async::Task<Result<std::string>> MailQueries::messageURL(std::string emailId) {
  const auto place = co_await findMailboxNameAndThreadId(emailId);
  if (!place)
    co_return std::unexpected(place.error());
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  auto url = mailPageURL(settings_.baseURL(), place->mailboxName,
                         MessageAddress{place->threadId, emailId}.pathComponent(),
                         accountParameter(mailAccountId(*session).value_or("")));
  if (!url)
    co_return std::unexpected(JMAPError::badResponse());
  co_return *std::move(url);
}

async::Task<Result<std::string>> MailQueries::messageURLForMessageId(std::string messageId) {
  auto emailId = co_await findEmailId(std::move(messageId));
  if (!emailId)
    co_return std::unexpected(std::move(emailId).error());
  co_return co_await messageURL(*std::move(emailId));
}

} // namespace ondrel::jmap
