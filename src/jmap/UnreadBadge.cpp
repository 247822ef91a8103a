#include "jmap/UnreadBadge.h"

#include "async/Deadline.h"
#include "async/sleep.h"
#include "jmap/MailQueries.h"
#include "platform/DockTile.h"
#include "settings/AppSettings.h"

namespace ondrel::jmap {

namespace {
constexpr std::chrono::seconds longestCount{60};
}

UnreadBadge::UnreadBadge(MailQueries& queries, settings::AppSettings& settings, platform::DockTile& dockTile)
    : queries_(queries), settings_(settings), dockTile_(dockTile) {
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
  dockTile_.setBadgeLabel(count > 0 ? std::optional(std::to_string(count)) : std::nullopt);
  co_return WorkOutcome::done;
}

void UnreadBadge::clear() {
  settings_.unreadCount.set(0);
  dockTile_.setBadgeLabel(std::nullopt);
}

} // namespace ondrel::jmap
