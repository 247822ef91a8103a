#include "web/RunningDownloads.h"

#include "base/Text.h"
#include "web/page/DownloadItem.h"

namespace ondrel::web {

void RunningDownloads::add(const std::shared_ptr<DownloadItem>& item) {
  std::erase_if(items_, [](const auto& each) {
    const auto live = each.lock();
    return !live || live->hasEnded();
  });
  items_.push_back(item);
}

std::vector<std::string> RunningDownloads::names() const {
  std::vector<std::string> names;
  for (const auto& each : items_)
    if (const auto item = each.lock(); item && !item->hasEnded())
      names.push_back(base::shortDisplayLine(item->filename));
  return names;
}

} // namespace ondrel::web
