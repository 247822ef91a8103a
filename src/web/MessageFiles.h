#pragma once

#include "async/Scope.h"
#include "base/Log.h"
#include "platform/HttpClient.h"

#include <expected>
#include <memory>
#include <string>

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class Directories;
class NewFiles;
} // namespace ondrel::platform

namespace ondrel::web {

class DownloadItem;

// Saves messages as the service gives them out (RFC 5322) in the user's Downloads folder, under the title of
// the page that asked. Outlives the tabs: a message is saved also when its tab closes meanwhile. Main thread
// only.
class MessageFiles final {
 public:
  // All of them outlive it.
  MessageFiles(platform::HttpClient& http, platform::NewFiles& newFiles,
               const platform::Directories& directories, jmap::NotificationManager& notifications);

  // Comes at once; the item tells of the end, and so does a notification unless the user has cancelled it.
  // The address is one of the service's user content, which needs no credentials beside it.
  std::shared_ptr<DownloadItem> saveEml(std::string title, std::string url);

 private:
  async::Task<void> fetchAndSave(std::shared_ptr<DownloadItem> item, std::string title, std::string url);
  async::Task<platform::HttpResult<std::string>> fetchText(std::string url);
  // Replaces a file of that name.
  async::Task<void> saveStringToFile(std::string text, std::shared_ptr<DownloadItem> item);
  async::Task<std::expected<void, std::string>> write(std::string path, std::string text);

  platform::HttpClient& http_;
  platform::NewFiles& newFiles_;
  const platform::Directories& directories_;
  jmap::NotificationManager& notifications_;
  const base::Logger logger_{"ui"};
  async::Scope scope_;
};

} // namespace ondrel::web
