#include "attachments/FilesViewModel.h"

#include "jmap/mail/MailQueries.h"

#include <utility>

namespace ondrel::attachments {

FilesViewModel::FilesViewModel(FilesServices services)
    : downloads(actions_.downloads), previewURL(actions_.previewURL), rowsChanged(rows_.changed),
      thumbnailChanged(thumbnails_.changed), busyChanged(actions_.busyChanged),
      services_(std::move(services)), rows_(services_.types), thumbnails_(services_.downloader),
      actions_(services_, errorMessage) {
}

std::optional<FilesViewModel::Date> FilesViewModel::oldestLoadedDate() const {
  // An email without a date has the earliest.
  if (*hasLoadedAll || rows_.isEmpty() || rows_.last().receivedAt == Date::min())
    return std::nullopt;
  return rows_.last().receivedAt;
}

void FilesViewModel::setSearchText(std::string text) {
  searchText_ = std::move(text);
  applyFilter();
}

void FilesViewModel::toggleCategory(AttachmentCategory category) {
  if (selectedCategories_.erase(category) == 0)
    selectedCategories_.insert(category);
  applyFilter();
}

void FilesViewModel::clearCategories() {
  selectedCategories_.clear();
  applyFilter();
}

void FilesViewModel::applyFilter() {
  filterChanged.emit();
  rows_.setFilter(searchText_, selectedCategories_);
}

async::Task<void> FilesViewModel::loadIfEmpty() {
  if (rows_.isEmpty())
    co_await loadNextPage();
}

async::Task<void> FilesViewModel::loadNextPage() {
  if (*isLoading || *hasLoadedAll)
    co_return;
  isLoading.set(true);
  hasPageFailed_ = false;
  errorMessage.set(std::nullopt);
  std::int64_t position = 0;
  jmap::Result<jmap::AttachmentPage> page;
  do {
    position = emailsLoaded_;
    page = co_await services_.mail.fetchAttachments(position, pageSize);
    // After a refresh a page from further down has nothing to follow on.
  } while (position != emailsLoaded_);

  if (page) {
    emailsLoaded_ += page->emailCount;
    hasLoadedAll.set(page->emailCount < pageSize || emailsLoaded_ >= page->total);
    rows_.append(std::move(page->attachments));
  } else {
    logger_.error("FilesViewModel: failed to load attachments: {}", page.error().description());
    hasPageFailed_ = true;
    errorMessage.set(page.error().inWords());
  }
  isLoading.set(false);
}

async::Task<void> FilesViewModel::refresh() {
  emailsLoaded_ = 0;
  hasLoadedAll.set(false);
  rows_.clear();
  co_await loadNextPage();
}

void FilesViewModel::loadThumbnail(const jmap::AttachmentInfo& info) {
  const auto category = categoryOf(info);
  if (isPrintable(category))
    thumbnails_.load(info);
}

void FilesViewModel::print(const jmap::AttachmentInfo& info) {
  using platform::DocumentKind;
  const auto category = categoryOf(info);
  std::optional<DocumentKind> kind;
  if (category == AttachmentCategory::image)
    kind = DocumentKind::image;
  else if (category == AttachmentCategory::pdf)
    kind = DocumentKind::pdf;
  actions_.print(info, kind);
}

} // namespace ondrel::attachments
