#include "jmap/UnreadBadge.h"

#include "jmap/MailQueries.h"
#include "platform/DockTile.h"
#include "settings/AppSettings.h"

namespace ondrel::jmap {

UnreadBadge::UnreadBadge(MailQueries& queries, settings::AppSettings& settings, platform::DockTile& dockTile)
    : queries_(queries), settings_(settings), dockTile_(dockTile) {
}

async::Task<void> UnreadBadge::refresh() {
  const auto account = accountNumber_;
  const auto count = co_await queries_.inboxUnreadCount();
  if (!count || account != accountNumber_)
    co_return;
  settings_.unreadCount.set(*count);
  dockTile_.setBadgeLabel(*count > 0 ? std::optional(std::to_string(*count)) : std::nullopt);
}

void UnreadBadge::clear() {
  ++accountNumber_;
  settings_.unreadCount.set(0);
  dockTile_.setBadgeLabel(std::nullopt);
}

} // namespace ondrel::jmap
