#include "attachments/RowActions.h"

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

async::Task<std::optional<std::string>> RowActions::fetchFile(jmap::AttachmentInfo info) {
  if (auto path = fetched(info.blobId))
    return at(*std::move(path));
  auto path = services_.directories.temporary() + "/" + previewName(info.blobId, info.name);
  auto fetching = services_.downloader.fetchFile(info, path);
  return keepFile(std::move(info), std::move(path), std::move(fetching));
}

async::Task<std::optional<std::string>> RowActions::keepFile(jmap::AttachmentInfo info, std::string path,
                                                             async::Task<Result<void>> fetching) {
  const auto done = co_await std::move(fetching);
  if (!done) {
    fail("preview", info, done.error().description());
    co_return std::nullopt;
  }
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
  if (const auto path = fetched(info.blobId)) {
    showFile(info.blobId, *path);
    return;
  }
  markBusy(info.id, true);
  scope_.spawn(showWhenFetched(info, fetchFile(info)));
}

async::Task<void> RowActions::showWhenFetched(jmap::AttachmentInfo info,
                                              async::Task<std::optional<std::string>> fetching) {
  const auto path = co_await std::move(fetching);
  if (path)
    showFile(info.blobId, *path);
  markBusy(info.id, false);
}

void RowActions::print(const jmap::AttachmentInfo& info, std::optional<platform::DocumentKind> kind) {
  markBusy(info.id, true);
  scope_.spawn(printWhenFetched(info, kind, services_.downloader.fetchAttachmentData(info)));
}

async::Task<void> RowActions::printWhenFetched(jmap::AttachmentInfo info,
                                               std::optional<platform::DocumentKind> kind,
                                               async::Task<Result<std::string>> fetching) {
  auto data = co_await std::move(fetching);
  markBusy(info.id, false);
  if (data && !kind)
    data = std::unexpected(AttachmentError{AttachmentError::Kind::invalidResponse});
  if (!data) {
    fail("print", info, data.error().description());
    co_return;
  }
  const auto problem =
      co_await services_.printer.print(std::move(*data), *kind, info.name, services_.frontWindow());
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
