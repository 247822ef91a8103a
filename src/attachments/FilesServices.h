#pragma once

#include <functional>
#include <memory>
#include <string>

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::platform {
class ContentTypes;
class Directories;
class DocumentPrinter;
class FileStore;
class Window;
} // namespace ondrel::platform

namespace ondrel::web {
class DownloadItem;
}

namespace ondrel::attachments {

class AttachmentDownloader;

// What the browser of attachments stands on; all outlive it.
struct FilesServices {
  jmap::MailQueries& mail;
  AttachmentDownloader& downloader;
  const platform::ContentTypes& types;
  const platform::Directories& directories;
  platform::FileStore& files;
  platform::DocumentPrinter& printer;
  // The one that the user works in.
  std::function<std::shared_ptr<platform::Window>()> frontWindow;
  // Tells the user of a download's end when they look elsewhere then.
  std::function<void(std::shared_ptr<web::DownloadItem>)> watchDownload;
  // Shows a message of the web application in a main window.
  std::function<void(const std::string& url, const std::string& emailId)> openMessage;
};

} // namespace ondrel::attachments
