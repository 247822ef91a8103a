#include "jmap/newmail/UnreadBadge.h"

#include "async/Deadline.h"
#include "async/sleep.h"
#include "jmap/mail/MailQueries.h"
#include "platform/desktop/LauncherBadge.h"
#include "settings/AppSettings.h"

namespace ondrel::jmap {

namespace {
constexpr std::chrono::seconds longestCount{60};
}

UnreadBadge::UnreadBadge(MailQueries& queries, settings::AppSettings& settings,
                         platform::LauncherBadge& launcherBadge)
    : queries_(queries), settings_(settings), launcherBadge_(launcherBadge) {
}

async::Task<WorkOutcome> UnreadBadge::refresh() {
  const auto answer = co_await async::withDeadline(longestCount, queries_.inboxUnreadCount());
  // What was counted may belong to an account that has been left meanwhile.
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return WorkOutcome::done;
  if (!answer || !*answer)
    co_return WorkOutcome::failed;
  const auto count = **answer;
  settings_.unreadCount.set(count);
  launcherBadge_.setLabel(count > 0 ? std::optional(std::to_string(count)) : std::nullopt);
  co_return WorkOutcome::done;
}

void UnreadBadge::clear() {
  settings_.unreadCount.set(0);
  launcherBadge_.setLabel(std::nullopt);
}

} // namespace ondrel::jmap
