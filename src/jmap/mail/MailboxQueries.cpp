#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/mail/MailboxName.h"
#include "jmap/mail/MailboxOfRole.h"
#include "jmap/protocol/JMAPReading.h"

namespace ondrel::jmap {

async::Task<Result<std::optional<std::string>>> MailQueries::findMailboxId(std::string name) {
  auto account = co_await mailAccount(client_, "findMailboxId");
  if (!account)
    co_return std::unexpected(std::move(account).error());
  const auto reply = co_await ask(
      client_, account->session,
      jmapRequest("Mailbox/get", {{"accountId", account->id}, {"properties", {"id", "name"}}}, "m0"));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto list = answeredList(*reply, 0);
  if (!list.array()) {
    networkLogger.error("findMailboxId: unexpected JMAP response format");
    co_return std::unexpected(JMAPError::badResponse());
  }
  for (const auto& mailbox : list.elements())
    if (const auto itsName = mailbox["name"].string(); itsName && sameMailboxName(*itsName, name))
      co_return mailbox["id"].string();
  co_return std::nullopt;
}

async::Task<Result<std::int64_t>> MailQueries::inboxUnreadCount() {
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  const auto accountId = mailAccountId(*session);
  if (!accountId) {
    networkLogger.error("inboxUnreadCount: no mail account ID in JMAP session");
    co_return 0;
  }
  const auto reply = co_await ask(
      client_, *session,
      jmapRequest("Mailbox/get", {{"accountId", *accountId}, {"properties", {"id", "role", "unreadEmails"}}},
                  "0"));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto list = answeredList(*reply, 0);
  if (!list.array()) {
    networkLogger.error("inboxUnreadCount: unexpected JMAP response format");
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return firstOfRole(list, "inbox")["unreadEmails"].wholeNumber().value_or(0);
}

async::Task<Result<std::string>> MailQueries::fetchInboxMailboxId() {
  const auto mailboxes = mailboxes_;
  if (mailboxes->inboxId)
    co_return *mailboxes->inboxId;
  auto inbox = co_await mailboxOfRole(client_, {"fetchInboxMailboxId", "inbox", "inbox", "m0", true});
  if (!inbox)
    co_return std::unexpected(std::move(inbox).error());
  mailboxes->inboxId = inbox->id;
  mailboxes->inboxName = inbox->name;
  co_return inbox->id;
}

async::Task<Result<std::string>> MailQueries::fetchTrashMailboxId() {
  const auto mailboxes = mailboxes_;
  if (mailboxes->trashId)
    co_return *mailboxes->trashId;
  auto trash = co_await mailboxOfRole(client_, {"fetchTrashMailboxId", "trash", "trash", "t0"});
  if (!trash)
    co_return std::unexpected(std::move(trash).error());
  mailboxes->trashId = trash->id;
  co_return trash->id;
}

async::Task<Result<std::string>> MailQueries::fetchJunkMailboxId() {
  const auto mailboxes = mailboxes_;
  if (mailboxes->junkId)
    co_return *mailboxes->junkId;
  auto junk = co_await mailboxOfRole(client_, {"fetchJunkMailboxId", "junk", "junk mailbox", "j0"});
  if (!junk)
    co_return std::unexpected(std::move(junk).error());
  mailboxes->junkId = junk->id;
  co_return junk->id;
}

} // namespace ondrel::jmap
