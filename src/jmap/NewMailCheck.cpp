#include "jmap/NewMailCheck.h"

#include "async/sleep.h"
#include "jmap/JMAPReading.h"
#include "jmap/MailRequest.h"

#include <utility>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

// What one check looks at; more changes wait for the next event.
constexpr int maxChanges = 50;

const json::array* firstAnswer(const json::value& reply) {
  const auto* members = reply.if_object();
  const auto* answers = members ? arrayMember(*members, "methodResponses") : nullptr;
  return answers && !answers->empty() ? answers->front().if_array() : nullptr;
}

} // namespace

NewMailCheck::NewMailCheck(JMAPClient& client, Notify notify) : client_(client), notify_(std::move(notify)) {
}

async::Task<Result<std::string>> NewMailCheck::fetchCurrentEmailState() {
  auto account = co_await mailAccount(client_, "fetchCurrentEmailState");
  if (!account)
    co_return std::unexpected(std::move(account.error()));
  auto body = jmapRequest("Email/get", {{"accountId", account->id}, {"ids", json::array()}}, "s0");
  const auto reply = co_await ask(client_, std::move(account->session), std::move(body));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto* arguments = answer(*reply, 0);
  auto state = arguments ? stringMember(*arguments, "state") : std::nullopt;
  if (!state) {
    logger_.error("fetchCurrentEmailState: unexpected JMAP response format");
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return std::move(*state);
}

async::Task<void> NewMailCheck::seedEmailState() {
  const auto state = co_await fetchCurrentEmailState();
  // Replaced by a connection that goes on from what is known, or by a seeding for another account.
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return;
  if (state) {
    lastEmailState_ = *state;
    logger_.info("seedEmailState: seeded state {}", *state);
  } else {
    lastEmailState_.reset();
    logger_.error("seedEmailState: failed to fetch initial email state");
  }
}

async::Task<Result<NewMailCheck::EmailChanges>> NewMailCheck::fetchEmailChanges(std::string since) {
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  const auto accountId = mailAccountId(*session);
  if (!accountId)
    co_return std::unexpected(JMAPError::badResponse());
  auto body = jmapRequest(
      "Email/changes",
      {{"accountId", *accountId}, {"sinceState", std::move(since)}, {"maxChanges", maxChanges}}, "c0");
  const auto reply = co_await ask(client_, *session, std::move(body));
  if (!reply)
    co_return std::unexpected(reply.error());

  const auto fail = [this](std::string_view why) {
    logger_.error("fetchEmailChanges: {}", why);
    return std::unexpected(JMAPError::badResponse());
  };
  const auto* first = firstAnswer(*reply);
  if (!first)
    co_return fail("malformed Email/changes response");
  const auto* name = first->empty() ? nullptr : first->front().if_string();
  if (name && *name == "error")
    co_return fail("JMAP returned error — state likely invalidated");
  const auto* arguments = answer(*reply, 0);
  auto newState = arguments ? stringMember(*arguments, "newState") : std::nullopt;
  const auto* created = arguments ? arrayMember(*arguments, "created") : nullptr;
  if (!newState || !created || strings(*created).size() != created->size())
    co_return fail("missing newState or created in Email/changes response");
  co_return EmailChanges{strings(*created), std::move(*newState)};
}

async::Task<Result<void>> NewMailCheck::checkSince(std::string since) {
  auto changes = co_await fetchEmailChanges(since);
  if (!changes)
    co_return std::unexpected(std::move(changes.error()));
  // Before anything is shown: a message that can't be shown is not tried again with each event.
  lastEmailState_ = std::move(changes->newState);
  if (changes->created.empty()) {
    logger_.info("checkAndNotifyNewEmails: no new emails since {}", since);
    co_return Result<void>();
  }
  logger_.info("checkAndNotifyNewEmails: {} new email(s) since {}", changes->created.size(), since);
  co_return co_await notify_(std::move(changes->created));
}

async::Task<void> NewMailCheck::checkAndNotifyNewEmails() {
  if (!lastEmailState_) {
    logger_.error("checkAndNotifyNewEmails: no lastEmailState — seeding instead of checking");
    co_await seedEmailState();
    co_return;
  }
  const auto checked = co_await checkSince(*lastEmailState_);
  if (checked)
    co_return;
  logger_.error("Failed to fetch email changes: {}", checked.error().description());
  auto state = co_await fetchCurrentEmailState();
  if (state)
    lastEmailState_ = std::move(*state);
  else
    lastEmailState_.reset();
  logger_.error("checkAndNotifyNewEmails: re-seeded lastEmailState after error — any emails in this window "
                "were not notified for");
}

} // namespace ondrel::jmap
