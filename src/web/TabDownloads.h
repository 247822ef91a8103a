#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Reply.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Download;
class Panels;
} // namespace ondrel::platform

namespace ondrel::web {

class DownloadItem;
class WindowViewModel;

// The downloads that began in one tab: asks where to, and keeps the tab's list of them. A download goes on
// without its tab. Main thread only.
class TabDownloads {
 public:
  // The panels outlive it.
  TabDownloads(std::weak_ptr<WindowViewModel> viewModel, platform::Panels& panels);
  ~TabDownloads();

  void take(std::shared_ptr<platform::Download> download);

 private:
  using Destination = base::Reply<std::optional<std::string>>;
  struct Running {
    std::shared_ptr<platform::Download> download;
    std::shared_ptr<DownloadItem> item; // none until the destination is chosen
    std::vector<base::Subscription> subscriptions;
  };

  async::Task<void> chooseDestination(std::shared_ptr<platform::Download> download, std::string suggestedName,
                                      std::optional<std::string> mimeType, Destination reply);
  // Without an error it is there.
  void didEnd(platform::Download* download, std::optional<std::string> error);
  async::Task<void> retire(std::shared_ptr<DownloadItem> item);

  const std::weak_ptr<WindowViewModel> viewModel_;
  platform::Panels& panels_;
  std::map<platform::Download*, Running> running_;
  async::Scope scope_;
};

} // namespace ondrel::web
