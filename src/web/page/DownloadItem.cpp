#include "web/page/DownloadItem.h"

#include "async/sleep.h"
#include "platform/Download.h"

namespace ondrel::web {

namespace {

std::uint64_t lastId = 0;

// So long the bar is seen full before the row changes.
constexpr std::chrono::milliseconds fullBarTime{400};

} // namespace

DownloadItem::DownloadItem(std::string name, std::string path, std::shared_ptr<platform::Download> download)
    : id(++lastId), filename(std::move(name)), destination(std::move(path)), download_(std::move(download)),
      progressObservation_(download_->progressed.subscribe([this] { copyProgress(); })) {
}

void DownloadItem::copyProgress() {
  const auto progress = download_->progress();
  fractionCompleted.set(progress.fractionCompleted);
  bytesWritten.set(progress.bytesWritten);
  totalBytes.set(progress.totalBytes);
}

void DownloadItem::markFinished() {
  progressObservation_.reset();
  fractionCompleted.set(1.0);
  if (*totalBytes >= 1)
    bytesWritten.set(*totalBytes);
  scope_.spawn(finishLater());
}

async::Task<void> DownloadItem::finishLater() {
  co_await async::sleep(fullBarTime);
  state.set({DownloadState::Kind::finished, {}});
}

void DownloadItem::markFailed(std::string error) {
  progressObservation_.reset();
  state.set({DownloadState::Kind::failed, std::move(error)});
}

} // namespace ondrel::web
