#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "attachments/AttachmentError.h"
#include "attachments/FilesServices.h"
#include "base/Event.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "jmap/mail/AttachmentInfo.h"
#include "platform/documents/DocumentDecoder.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::web {
class DownloadItem;
}

namespace ondrel::attachments {

// What the user can do with an attachment. Several may be asked for at once; they are done one after the
// other. Main thread only.
class RowActions {
 public:
  // `errorMessage` takes what fails. It outlives this object, as the services do.
  RowActions(const FilesServices& services, base::Observable<std::optional<std::string>>& errorMessage)
      : services_(services), errorMessage_(errorMessage) {}

  void download(const jmap::AttachmentInfo& info);
  // Takes the place of the preview before it, if that still waits.
  void preview(const jmap::AttachmentInfo& info);
  void dropPreview(); // see FilesViewModel
  // An image or a PDF; of other attachments it says that they can't be printed.
  void print(const jmap::AttachmentInfo& info, std::optional<platform::DocumentKind> kind);
  void showEmail(const jmap::AttachmentInfo& info);
  // See FilesViewModel.
  async::Task<std::optional<std::string>> fetchFile(jmap::AttachmentInfo info);

  bool isBusy(const std::string& id) const { return busy_.contains(id); }

  base::Observable<std::vector<std::shared_ptr<web::DownloadItem>>> downloads;
  base::Observable<std::optional<std::string>> previewURL; // see FilesViewModel
  std::string previewedBlobId;                             // of that file
  base::Event<const std::string& /*id*/> busyChanged;

 private:
  // The last one that was asked for.
  struct Preview {
    std::string id;
    async::TaskHandle task;
    bool isWaiting = false; // for jobs before it
  };

  void markBusy(const std::string& id, bool isBusy);
  void fail(std::string_view action, const jmap::AttachmentInfo& info, const std::string& reason);
  // The path of a file that has been fetched and is still there.
  std::optional<std::string> fetched(const std::string& blobId) const;
  void showFile(const std::string& blobId, const std::string& path);
  // The action for the log. `begun` is called when it waits no longer.
  async::Task<std::optional<std::string>> fetch(std::string_view action, jmap::AttachmentInfo info,
                                                std::function<void()> begun);
  async::Task<std::optional<std::string>> keepFile(std::string_view action, jmap::AttachmentInfo info,
                                                   std::string path, async::Task<Result<void>> fetching);
  async::Task<void> showWhenFetched(jmap::AttachmentInfo info,
                                    async::Task<std::optional<std::string>> fetching);
  async::Task<void> printWhenFetched(jmap::AttachmentInfo info, platform::DocumentKind kind,
                                     async::Task<std::optional<std::string>> fetching);
  async::Task<void> findAndShowEmail(jmap::AttachmentInfo info);
  async::Task<void> retire(std::shared_ptr<web::DownloadItem> item);

  const FilesServices& services_;
  base::Observable<std::optional<std::string>>& errorMessage_;
  const base::Logger logger_{"network"};
  std::map<std::string, std::string> files_; // paths by blob id
  std::multiset<std::string> busy_;          // one for each action
  Preview preview_;
  async::Scope scope_;
};

} // namespace ondrel::attachments
