#pragma once

#include "async/Task.h"
#include "attachments/AttachmentCategory.h"
#include "attachments/AttachmentRows.h"
#include "attachments/FilesServices.h"
#include "attachments/RowActions.h"
#include "attachments/Thumbnails.h"
#include "base/Event.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "jmap/mail/AttachmentInfo.h"
#include "platform/documents/DocumentDecoder.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::attachments {

// The state of one window that lists the attachments of the user's mail, newest first. Nothing of it is kept
// between runs. Main thread only; tasks that it gives are awaited while it lives.
class FilesViewModel {
 public:
  static constexpr std::int64_t pageSize = 30; // emails
  using RowsChange = attachments::RowsChange;
  using Date = std::chrono::sys_time<std::chrono::milliseconds>;

  explicit FilesViewModel(FilesServices services);

  base::Observable<bool> isLoading{false};
  base::Observable<bool> hasLoadedAll{false};
  base::Observable<std::optional<std::string>> errorMessage; // of the last failure, until the next load
  base::Observable<std::vector<std::shared_ptr<web::DownloadItem>>>& downloads;
  // Path of the file that the preview shows. Notifies also when the same is to be shown again: it is absent
  // for a moment then.
  base::Observable<std::optional<std::string>>& previewURL;
  const std::string& previewedBlobId() const { return actions_.previewedBlobId; } // of that file
  base::Event<const RowsChange&>& rowsChanged; // of the filtered rows; see AttachmentRows::changed
  base::Event<const std::string& /*blobId*/>& thumbnailChanged;
  base::Event<const std::string& /*id*/>& busyChanged;
  base::Event<> filterChanged; // comes before the rows change

  // The filtered rows, in order. References hold until refresh().
  std::size_t rowCount() const { return rows_.count(); }
  const jmap::AttachmentInfo& row(std::size_t index) const { return rows_.row(index); }
  AttachmentCategory categoryOf(const jmap::AttachmentInfo& info) const { return rows_.categoryOf(info); }
  bool isBusy(const std::string& id) const { return actions_.isBusy(id); }
  // Null while there is none.
  platform::PicturePointer thumbnail(const std::string& blobId) const { return thumbnails_.find(blobId); }
  bool isFiltered() const { return rows_.isFiltered(); } // a search or filter is active
  // The last page that was asked for; errorMessage may be of something else.
  bool hasPageFailed() const { return hasPageFailed_; }
  // Of the last row, as long as there are more.
  std::optional<Date> oldestLoadedDate() const;
  const std::set<AttachmentCategory>& selectedCategories() const { return selectedCategories_; }

  void setSearchText(std::string text);
  void toggleCategory(AttachmentCategory category);
  void clearCategories();

  async::Task<void> loadIfEmpty();
  // Does nothing while a page is being fetched, or when there is none.
  async::Task<void> loadNextPage();
  // Empties the rows and loads the first page; the thumbnails and fetched files stay.
  async::Task<void> refresh();

  // The row has come into view.
  void loadThumbnail(const jmap::AttachmentInfo& info);
  // The row is out of sight: a request that still waits is taken back.
  void dropThumbnail(const std::string& blobId) { thumbnails_.drop(blobId); }
  void download(const jmap::AttachmentInfo& info) { actions_.download(info); }
  void preview(const jmap::AttachmentInfo& info) { actions_.preview(info); }
  // Nobody wants to see the file of the last preview() any more. One whose turn has come is fetched all the
  // same: it may be wanted again.
  void dropPreview() { actions_.dropPreview(); }
  void print(const jmap::AttachmentInfo& info);
  void showEmail(const jmap::AttachmentInfo& info) { actions_.showEmail(info); }
  // Path of a copy of the file, fetched unless a preview or an earlier call has done so; absent when that
  // failed, which is told in errorMessage.
  async::Task<std::optional<std::string>> fetchFile(jmap::AttachmentInfo info) {
    return actions_.fetchFile(std::move(info));
  }

 private:
  void applyFilter();

  const FilesServices services_;
  const base::Logger logger_{"network"};
  AttachmentRows rows_;
  Thumbnails thumbnails_;
  RowActions actions_;
  std::string searchText_;
  std::set<AttachmentCategory> selectedCategories_;
  std::int64_t emailsLoaded_ = 0; // the next page's position
  bool hasPageFailed_ = false;
};

} // namespace ondrel::attachments
