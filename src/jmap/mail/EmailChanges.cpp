#include "base/Json.h"
#include "jmap/mail/EmailPatch.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/protocol/JMAPReading.h"

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

// Out of the inbox and into the trash. What has left the inbox meanwhile is in the trash alone afterwards: as
// it is kept nowhere else by this user's will, nor does it stay in the archive.
async::Task<Result<void>> moveToTrash(MailQueries& queries, JMAPClient& client, MailAccount account,
                                      std::string emailId) {
  const auto inboxId = co_await queries.fetchInboxMailboxId();
  if (!inboxId)
    co_return std::unexpected(inboxId.error());
  const auto trashId = co_await queries.fetchTrashMailboxId();
  if (!trashId)
    co_return std::unexpected(trashId.error());
  const auto email = co_await currentEmail(client, account, emailId, {"mailboxIds"});
  if (!email)
    co_return std::unexpected(email.error());
  const auto mailboxIds = base::JsonReader(*email)["mailboxIds"];
  const bool isArchived = mailboxIds.object() && !mailboxIds[*inboxId].boolean().value_or(false);
  json::object patch{{membership(*inboxId), nullptr}, {membership(*trashId), true}};
  if (isArchived)
    patch = {{"mailboxIds", {{*trashId, true}}}};
  co_return co_await patchEmail(client, std::move(account), std::move(emailId), std::move(patch), "d0");
}

struct MembershipChange {
  std::size_t emails;
  std::string mailboxId;
  bool add;
};

void logOutcome(const MembershipChange& change, const JMAPReply& reply) {
  const auto arguments = reply.json ? answer(*reply.json, 0) : base::JsonReader();
  if (!arguments.object()) {
    networkLogger.error("setMailboxMembership: unparsable Email/set response — body: {}",
                        reply.excerpt(2000));
    return;
  }
  if (const auto* failed = arguments["notUpdated"].object(); failed && !failed->empty())
    networkLogger.error("setMailboxMembership: {} email(s) failed to {} mailbox {}: {}", failed->size(),
                        change.add ? "add" : "remove", change.mailboxId,
                        reply.withoutSecrets(base::jsonText(*failed)));
  if (const auto* updated = arguments["updated"].object())
    networkLogger.info("setMailboxMembership: {} mailbox {} — {}/{} email(s) updated",
                       change.add ? "added" : "removed", change.mailboxId, updated->size(), change.emails);
}

} // namespace

async::Task<void> MailQueries::setMailboxMembership(std::vector<std::string> emailIds, std::string mailboxId,
                                                    bool add) {
  if (emailIds.empty())
    co_return;
  const MembershipChange change{emailIds.size(), mailboxId, add};
  const auto fail = [&change](const JMAPError& error) {
    networkLogger.error("setMailboxMembership: failed to {} mailbox {} on {} email(s): {}",
                        change.add ? "add" : "remove", change.mailboxId, change.emails, error.description());
  };
  const auto session = co_await client_.fetchSessionData();
  if (!session) {
    fail(session.error());
    co_return;
  }
  const auto accountId = mailAccountId(*session);
  if (!accountId)
    co_return;

  const json::object patch{{membership(mailboxId), add ? json::value(true) : json::value(nullptr)}};
  json::object update;
  for (const auto& id : emailIds)
    update[id] = patch;
  auto body = jmapRequest("Email/set", {{"accountId", *accountId}, {"update", std::move(update)}}, "l0");
  const auto reply = co_await sendRequest(client_, *session, std::move(body));
  if (reply)
    logOutcome(change, *reply);
  else
    fail(reply.error());
}

async::Task<void> MailQueries::deleteEmail(std::string emailId) {
  auto session = co_await client_.fetchSessionData();
  Result<void> result;
  if (session) {
    auto accountId = mailAccountId(*session);
    if (!accountId)
      co_return;
    result = co_await moveToTrash(*this, client_, {*std::move(session), *std::move(accountId)}, emailId);
  } else {
    result = std::unexpected(session.error());
  }
  if (!result) {
    networkLogger.error("deleteEmail: failed to move {} to trash: {}", emailId, result.error().description());
    co_return;
  }
  if (badgeRefresh_)
    badgeRefresh_();
}

} // namespace ondrel::jmap
