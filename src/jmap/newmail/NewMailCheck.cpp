#include "jmap/newmail/NewMailCheck.h"

#include "async/Deadline.h"
#include "async/sleep.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/protocol/JMAPReading.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

// What one step looks at.
constexpr int maxChanges = 50;
// Of a server whose changes have no end.
constexpr std::size_t mostSteps = 1000;

} // namespace

NewMailCheck::NewMailCheck(JMAPClient& client, NewMailNotifier& notifier)
    : client_(client), notifier_(notifier) {
}

void NewMailCheck::clear() {
  lastEmailState_.reset();
  created_.clear();
  passedStates_.clear();
}

async::Task<Result<std::string>> NewMailCheck::fetchCurrentEmailState() {
  auto account = co_await mailAccount(client_, "fetchCurrentEmailState");
  if (!account)
    co_return std::unexpected(std::move(account.error()));
  auto body = jmapRequest("Email/get", {{"accountId", account->id}, {"ids", json::array()}}, "s0");
  const auto reply = co_await ask(client_, std::move(account->session), std::move(body));
  if (!reply)
    co_return std::unexpected(reply.error());
  auto state = answer(*reply, 0)["state"].string();
  if (!state) {
    logger_.error("fetchCurrentEmailState: unexpected JMAP response format");
    co_return std::unexpected(JMAPError::badResponse());
  }
  co_return std::move(*state);
}

async::Task<Result<void>> NewMailCheck::seedEmailState() {
  if (lastEmailState_)
    co_return Result<void>();
  auto state = co_await fetchCurrentEmailState();
  // Replaced by a connection that goes on from what is known, or by a seeding for another account.
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return std::unexpected(JMAPError::cancelled());
  if (!state) {
    logger_.error("seedEmailState: failed to fetch initial email state");
    co_return std::unexpected(std::move(state.error()));
  }
  // A check that failed before this was asked for may have been quicker.
  if (!lastEmailState_) {
    lastEmailState_ = *state;
    logger_.info("seedEmailState: seeded state {}", *state);
  }
  co_return Result<void>();
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
  const auto first = base::JsonReader(*reply)["methodResponses"][0];
  if (!first.array())
    co_return fail("malformed Email/changes response");
  if (first[0].string() == "error")
    co_return fail("JMAP returned error — state likely invalidated");
  const auto arguments = answer(*reply, 0);
  auto newState = arguments["newState"].string();
  const auto created = arguments["created"];
  if (!newState || !created.array() || created.strings().size() != created.size())
    co_return fail("missing newState or created in Email/changes response");
  co_return EmailChanges{.created = created.strings(),
                         .updated = arguments["updated"].strings(),
                         .destroyed = arguments["destroyed"].strings(),
                         .newState = std::move(*newState),
                         .hasMore = arguments["hasMoreChanges"].boolean().value_or(false)};
}

// A server that leads back to where it was would never come to an end.
bool NewMailCheck::isAnother(const std::string& state) {
  return passedStates_.size() < mostSteps && passedStates_.insert(state).second;
}

async::Task<Result<bool>> NewMailCheck::takeChanges() {
  const auto since = *lastEmailState_;
  auto changes = co_await fetchEmailChanges(since);
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return std::unexpected(JMAPError::cancelled());
  if (!changes)
    co_return std::unexpected(std::move(changes.error()));
  if (changes->created.empty())
    logger_.info("checkAndNotifyNewEmails: no new emails since {}", since);
  else
    logger_.info("checkAndNotifyNewEmails: {} new email(s) since {}", changes->created.size(), since);
  passedStates_.insert(since);
  const bool isLast = !changes->hasMore || !isAnother(changes->newState);
  if (isLast)
    passedStates_.clear();
  lastEmailState_ = std::move(changes->newState);
  std::ranges::move(changes->created, std::back_inserter(created_));
  notifier_.emailsChanged(changes->updated, changes->destroyed);
  co_return isLast;
}

async::Task<WorkOutcome> NewMailCheck::seedAnew(JMAPError error) {
  logger_.error("Failed to fetch email changes: {}", error.description());
  if (error.isPassing())
    co_return WorkOutcome::failed;
  auto state = co_await fetchCurrentEmailState();
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return WorkOutcome::done;
  if (!state) {
    logger_.error("checkAndNotifyNewEmails: no other state to go on from — keeping the last one");
    co_return state.error().isPassing() ? WorkOutcome::failed : WorkOutcome::done;
  }
  lastEmailState_ = std::move(*state);
  notifier_.anyMayHaveChanged();
  logger_.error("checkAndNotifyNewEmails: re-seeded lastEmailState after error — any emails in this window "
                "were not notified for");
  co_return WorkOutcome::done;
}

async::Task<Result<NewMail>> NewMailCheck::lookAtCreated() {
  auto looked = co_await notifier_.takeBackWhatChanged();
  if (!looked) {
    if (looked.error().isPassing() || looked.error().kind == JMAPError::Kind::cancelled)
      co_return std::unexpected(std::move(looked.error()));
    // Of old mail alone: new mail doesn't wait for it.
    logger_.error("takeBackWhatChanged: {}", looked.error().description());
  }
  if (created_.empty())
    co_return NewMail();
  auto mail = co_await notifier_.newMailAmong(created_);
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return std::unexpected(JMAPError::cancelled());
  // Before anything is shown: a message that can't be shown is not tried again with each event.
  if (mail || !mail.error().isPassing())
    created_.clear();
  co_return mail;
}

async::Task<NewMailCheck::Findings> NewMailCheck::findOut() {
  if (!lastEmailState_) {
    logger_.error("checkAndNotifyNewEmails: no lastEmailState — seeding instead of checking");
    const auto seeded = co_await seedEmailState();
    const bool again = !seeded && seeded.error().isPassing();
    co_return Findings{again ? WorkOutcome::failed : WorkOutcome::done};
  }
  auto complete = co_await takeChanges();
  if (!complete) {
    if (complete.error().kind == JMAPError::Kind::cancelled)
      co_return Findings();
    const auto seeded = co_await seedAnew(std::move(complete.error()));
    if (seeded == WorkOutcome::failed)
      co_return Findings{seeded};
  } else if (!*complete) {
    co_return Findings{WorkOutcome::unfinished};
  }
  auto mail = co_await lookAtCreated();
  if (mail)
    co_return Findings{WorkOutcome::done, std::move(*mail)};
  if (mail.error().kind == JMAPError::Kind::cancelled)
    co_return Findings();
  const auto outcome = co_await seedAnew(std::move(mail.error()));
  co_return Findings{outcome};
}

async::Task<WorkOutcome> NewMailCheck::checkAndNotifyNewEmails() {
  auto findings = co_await async::withDeadline(longestCheck, findOut());
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return WorkOutcome::done;
  if (!findings) {
    logger_.error("Failed to fetch email changes: no answer within {}s", longestCheck.count());
    co_return WorkOutcome::failed;
  }
  co_await notifier_.announce(std::move(findings->mail));
  co_return findings->outcome;
}

} // namespace ondrel::jmap
