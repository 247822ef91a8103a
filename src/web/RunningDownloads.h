#pragma once

#include <memory>
#include <string>
#include <vector>

namespace ondrel::web {

class DownloadItem;

// The files that are on their way to the user's disk, or wait for it, whichever window they were asked for
// in: they end with the program. One for the process, outlives the tabs; main thread only.
class RunningDownloads {
 public:
  void add(const std::shared_ptr<DownloadItem>& item);
  // Of those that have not ended, in the order in which they began, as they can be shown.
  std::vector<std::string> names() const;

 private:
  std::vector<std::weak_ptr<DownloadItem>> items_;
};

} // namespace ondrel::web
