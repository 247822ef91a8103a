#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "platform/Download.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::web {

class DownloadItem;
struct WebServices;
class WindowViewModel;

// The downloads that began in one tab: asks where to, one after the other, and keeps the tab's list of them.
// A download goes on without its tab. Main thread only.
class TabDownloads {
 public:
  // The services outlive it.
  TabDownloads(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services);
  ~TabDownloads();

  // Cancelled where more wait for their question than a user begins: a page may begin any number.
  void take(std::shared_ptr<platform::Download> download);
  // In the tab's list, until some seconds after its end.
  void show(const std::shared_ptr<DownloadItem>& item);

 private:
  // One that has no place yet.
  struct Beginning {
    std::shared_ptr<platform::Download> download;
    base::Subscription failed;
    bool isAsking = false;            // the user, for the place
    std::optional<std::string> error; // it has failed meanwhile
  };

  // Where shall it go?
  struct Question {
    std::shared_ptr<platform::Download> download;
    platform::Download::DestinationRequest request;
    platform::Download::DestinationReply reply;
  };

  void askNext();
  async::Task<void> ask(Question question);
  async::Task<void> chooseDestination(Question question);
  void didFailEarly(platform::Download* download, const std::string& error);
  void showFailed(std::string filename, std::string destination, std::string error);
  void listMade(const std::string& path);
  void list(const std::shared_ptr<DownloadItem>& item);
  async::Task<void> retire(std::shared_ptr<DownloadItem> item);

  const std::weak_ptr<WindowViewModel> viewModel_;
  const WebServices& services_;
  std::map<platform::Download*, Beginning> beginning_;
  std::deque<Question> waiting_;
  bool isAsking_ = false;
  base::Subscription fileMade_;
  async::Scope scope_;
};

} // namespace ondrel::web
