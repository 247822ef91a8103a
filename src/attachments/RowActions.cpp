#include "attachments/RowActions.h"

#include "async/sleep.h"
#include "attachments/AttachmentDownloader.h"
#include "attachments/FileName.h"
#include "jmap/mail/MailQueries.h"
#include "platform/FileStore.h"
#include "platform/documents/DocumentPrinter.h"
#include "web/page/DownloadItem.h"

#include <utility>

namespace ondrel::attachments {

namespace {

async::Task<std::optional<std::string>> at(std::string path) {
  co_return path;
}

} // namespace

void RowActions::download(const jmap::AttachmentInfo& info) {
  const auto item = services_.downloader.download(info);
  auto items = *downloads;
  items.push_back(item);
  downloads.set(std::move(items));
  services_.watchDownload(item);
  scope_.spawn(retire(item));
}

async::Task<void> RowActions::retire(std::shared_ptr<web::DownloadItem> item) {
  co_await web::rowTimeIsOver(item);
  auto items = *downloads;
  std::erase(items, item);
  downloads.set(std::move(items));
}

void RowActions::markBusy(const std::string& id, bool isBusy) {
  if (isBusy)
    busy_.insert(id);
  else
    busy_.erase(busy_.find(id));
  busyChanged.emit(id);
}

void RowActions::fail(std::string_view action, const jmap::AttachmentInfo& info, const std::string& reason) {
  logger_.error("FilesViewModel: {} failed for {}: {}", action, info.name, reason);
  // The same again is told too.
  errorMessage_.set(std::nullopt);
  errorMessage_.set(reason);
}

std::optional<std::string> RowActions::fetched(const std::string& blobId) const {
  const auto found = files_.find(blobId);
  if (found == files_.end() || !services_.files.exists(found->second))
    return std::nullopt;
  return found->second;
}

async::Task<std::optional<std::string>> RowActions::fetch(std::string_view action, jmap::AttachmentInfo info,
                                                          std::function<void()> begun) {
  if (auto path = fetched(info.blobId))
    return at(*std::move(path));
  auto path = services_.directories.temporary() + "/" + previewName(info.blobId, info.name);
  auto fetching = services_.downloader.fetchFile(info, path, std::move(begun));
  return keepFile(action, std::move(info), std::move(path), std::move(fetching));
}

async::Task<std::optional<std::string>> RowActions::fetchFile(jmap::AttachmentInfo info) {
  return fetch("preview", std::move(info), [] {});
}

async::Task<std::optional<std::string>> RowActions::keepFile(std::string_view action,
                                                             jmap::AttachmentInfo info, std::string path,
                                                             async::Task<Result<void>> fetching) {
  const auto done = co_await std::move(fetching);
  const bool isTakenBack = co_await async::cancelled();
  if (!done && !isTakenBack)
    fail(action, info, done.error().description());
  if (!done)
    co_return std::nullopt;
  files_.insert_or_assign(info.blobId, path);
  co_return path;
}

void RowActions::showFile(const std::string& blobId, const std::string& path) {
  previewedBlobId = blobId;
  if (*previewURL == path)
    previewURL.set(std::nullopt);
  previewURL.set(path);
}

void RowActions::preview(const jmap::AttachmentInfo& info) {
  dropPreview();
  if (const auto path = fetched(info.blobId)) {
    showFile(info.blobId, *path);
    return;
  }
  markBusy(info.id, true);
  preview_ = {.id = info.id, .task = {}, .isWaiting = true};
  auto fetching = fetch("preview", info, [this, id = info.id] {
    if (preview_.id == id)
      preview_.isWaiting = false;
  });
  preview_.task = scope_.spawn(showWhenFetched(info, std::move(fetching)));
}

void RowActions::dropPreview() {
  if (!preview_.isWaiting)
    return;
  auto dropped = std::exchange(preview_, Preview());
  dropped.task.cancel();
  markBusy(dropped.id, false);
}

async::Task<void> RowActions::showWhenFetched(jmap::AttachmentInfo info,
                                              async::Task<std::optional<std::string>> fetching) {
  const auto path = co_await std::move(fetching);
  const bool isTakenBack = co_await async::cancelled();
  if (isTakenBack)
    co_return;
  if (path)
    showFile(info.blobId, *path);
  markBusy(info.id, false);
}

void RowActions::print(const jmap::AttachmentInfo& info, std::optional<platform::DocumentKind> kind) {
  if (!kind) {
    fail("print", info, AttachmentError{AttachmentError::Kind::invalidResponse}.description());
    return;
  }
  markBusy(info.id, true);
  scope_.spawn(printWhenFetched(info, *kind, fetch("print", info, [] {})));
}

async::Task<void> RowActions::printWhenFetched(jmap::AttachmentInfo info, platform::DocumentKind kind,
                                               async::Task<std::optional<std::string>> fetching) {
  auto path = co_await std::move(fetching);
  markBusy(info.id, false);
  if (!path)
    co_return;
  const auto problem =
      co_await services_.printer.print(*std::move(path), kind, info.name, services_.frontWindow());
  if (problem)
    fail("print", info, *problem);
}

void RowActions::showEmail(const jmap::AttachmentInfo& info) {
  markBusy(info.id, true);
  scope_.spawn(findAndShowEmail(info));
}

async::Task<void> RowActions::findAndShowEmail(jmap::AttachmentInfo info) {
  const auto url = co_await services_.mail.messageURL(info.emailId);
  if (url)
    services_.openMessage(*url, info.emailId);
  else
    fail("show email", info, url.error().inWords());
  markBusy(info.id, false);
}

} // namespace ondrel::attachments
