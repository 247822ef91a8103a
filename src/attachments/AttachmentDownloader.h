#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "attachments/AttachmentError.h"
#include "attachments/JobQueue.h"
#include "attachments/LinkPage.h"
#include "base/Log.h"
#include "jmap/mail/AttachmentInfo.h"
#include "platform/documents/DocumentDecoder.h"

#include <functional>
#include <memory>
#include <string>

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::platform {
class ContentTypes;
class Directories;
class FileStore;
class NewFiles;
class HttpClient;
} // namespace ondrel::platform

namespace ondrel::web {
class DownloadItem;
}

namespace ondrel::attachments {

// Gets the bytes of attachments by the links that the web application has for them. All work goes through one
// hidden page, so that there is one job at a time, in the order in which they were asked for: a task of this
// class has its place from the call on. A job is taken back by cancelling its task. Outlives the windows: a
// download goes on without its own. One for the process, main thread only.
class AttachmentDownloader {
 public:
  static constexpr int thumbnailSide = 96; // pixels

  // All outlive it.
  struct Services {
    jmap::MailQueries& mail;
    const settings::AppSettings& settings;
    platform::WebViewFactory& webViews;
    const std::string& linkScript; // web::PageScripts::attachmentLink()
    platform::HttpClient& http;
    platform::NewFiles& newFiles;
    platform::FileStore& files;
    const platform::Directories& directories;
    platform::DocumentDecoder& decoder;
    const platform::ContentTypes& types;
  };

  explicit AttachmentDownloader(const Services& services);

  // Into the Downloads folder, under a name that isn't taken yet. The item tells how it goes.
  std::shared_ptr<web::DownloadItem> download(const jmap::AttachmentInfo& info);
  // To that path; what is there is replaced. `begun` is called when the job waits no longer.
  async::Task<Result<void>> fetchFile(jmap::AttachmentInfo info, std::string path,
                                      std::function<void()> begun);
  // Of an image or a PDF of at most HttpClient::largestBody; `begun` as above.
  async::Task<Result<platform::PicturePointer>> thumbnail(jmap::AttachmentInfo info,
                                                          std::function<void()> begun);

 private:
  std::string destinationOf(const jmap::AttachmentInfo& info) const;
  // The address of the bytes, in the job whose turn it is.
  async::Task<Result<std::string>> address(jmap::AttachmentInfo info);
  // The page of its email.
  async::Task<Result<std::string>> emailAddress(std::string emailId);
  async::Task<Result<std::string>> data(jmap::AttachmentInfo info);
  async::Task<void> runDownload(JobQueue::Place place, jmap::AttachmentInfo info,
                                std::shared_ptr<web::DownloadItem> item);
  async::Task<Result<void>> downloadTo(jmap::AttachmentInfo info, std::shared_ptr<web::DownloadItem> item);
  async::Task<Result<void>> runFile(JobQueue::Place place, jmap::AttachmentInfo info, std::string path,
                                    std::function<void()> begun);
  async::Task<Result<platform::PicturePointer>> runThumbnail(JobQueue::Place place, jmap::AttachmentInfo info,
                                                             std::function<void()> begun);

  const Services services_;
  const base::Logger logger_{"network"};
  LinkPage page_;
  JobQueue queue_;
  async::Scope scope_;
};

} // namespace ondrel::attachments
