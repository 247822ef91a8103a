#include "jmap/mail/EmailActions.h"

#include "async/sleep.h"
#include "base/JsonReader.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailboxOfRole.h"

namespace ondrel::jmap {

EmailActions::EmailActions(JMAPClient& client, MailQueries& queries, std::function<void()> badgeRefresh)
    : client_(client), queries_(queries), badgeRefresh_(std::move(badgeRefresh)) {
}

async::Task<void> EmailActions::lookForArchive() {
  if (knowsArchive_)
    co_return;
  const auto archive = co_await mailboxOfRole(client_, {"lookForArchive", "archive", "archive", "a0"});
  const bool isForAnother = co_await async::cancelled();
  if (isForAnother)
    co_return;
  if (archive)
    archiveId_ = archive->id;
  // Where the request failed, it is asked again.
  knowsArchive_ = archive || archive.error().kind == JMAPError::Kind::badResponse;
}

void EmailActions::forget() {
  knowsArchive_ = false;
  archiveId_.reset();
}

async::Task<void> EmailActions::archive(std::string emailId) {
  return perform("archiveEmail", std::move(emailId), &EmailActions::moveToArchive);
}

async::Task<void> EmailActions::markAsRead(std::string emailId) {
  return perform("markEmailAsRead", std::move(emailId), &EmailActions::setSeen);
}

async::Task<void> EmailActions::perform(std::string operation, std::string emailId, Change change) {
  auto account = co_await mailAccount(client_, operation);
  Result<void> done;
  if (account)
    done = co_await (this->*change)(*std::move(account), emailId);
  else
    done = std::unexpected(std::move(account).error());
  if (!done)
    networkLogger.error("{}: failed for {}: {}", operation, emailId, done.error().description());
  else if (badgeRefresh_)
    badgeRefresh_();
}

async::Task<Result<void>> EmailActions::moveToArchive(MailAccount account, std::string emailId) {
  const auto inboxId = co_await queries_.fetchInboxMailboxId();
  if (!inboxId)
    co_return std::unexpected(inboxId.error());
  co_await lookForArchive(); // at the start nobody may have done so
  const auto archiveId = archiveId_;
  if (!archiveId)
    co_return std::unexpected(JMAPError::refused("the account has no archive"));
  const auto email = co_await currentEmail(client_, account, emailId, {"mailboxIds"});
  if (!email)
    co_return std::unexpected(email.error());
  const auto mailboxIds = base::JsonReader(*email)["mailboxIds"];
  if (mailboxIds.object() && !mailboxIds[*inboxId].boolean().value_or(false))
    co_return {};
  co_return co_await patchEmail(client_, std::move(account), std::move(emailId),
                                {{membership(*inboxId), nullptr}, {membership(*archiveId), true}}, "a1");
}

async::Task<Result<void>> EmailActions::setSeen(MailAccount account, std::string emailId) {
  return patchEmail(client_, std::move(account), std::move(emailId), {{"keywords/$seen", true}}, "s0");
}

} // namespace ondrel::jmap
