#include "web/page/DownloadItem.h"

#include "async/Signal.h"
#include "async/sleep.h"
#include "platform/Download.h"

#include <utility>

namespace ondrel::web {

namespace {

using Kind = DownloadState::Kind;

std::uint64_t lastId = 0;

// So long the bar is seen full before the row changes.
constexpr std::chrono::milliseconds fullBarTime{400};
constexpr std::chrono::milliseconds progressPause{50};
// How long the row of what has ended stays, and how long it still does when the user leaves the rows after
// that.
constexpr std::chrono::seconds rowTime{4};
constexpr std::chrono::seconds graceTime{1};

} // namespace

DownloadItem::DownloadItem(std::string name, std::string path, Kind first, std::function<void()> cancel)
    : id(++lastId), filename(std::move(name)), destination(std::move(path)), state(DownloadState{first, {}}),
      canBeCancelled(cancel != nullptr), cancel_(std::move(cancel)) {
}

DownloadItem::DownloadItem(std::string name, std::string path, std::shared_ptr<platform::Download> download)
    : DownloadItem(std::move(name), std::move(path), Kind::downloading, [download] { download->cancel(); }) {
  subscriptions_.push_back(download->progressed.subscribe([this] { progressed(); }));
  subscriptions_.push_back(download->finished.subscribe([this] { markFinished(); }));
  subscriptions_.push_back(
      download->failed.subscribe([this](const std::string& error) { markFailed(error); }));
  progress_ = [download = std::move(download)] {
    const auto now = download->progress();
    return Progress{now.fractionCompleted, now.bytesWritten, now.totalBytes};
  };
}

void DownloadItem::markStarted() {
  if (!hasEnded_)
    state.set({Kind::downloading, {}});
}

void DownloadItem::setProgress(std::int64_t written, std::int64_t total) {
  const double fraction = total > 0 ? static_cast<double>(written) / static_cast<double>(total) : 0;
  progress_ = [now = Progress{fraction, written, total}] { return now; };
  progressed();
}

void DownloadItem::progressed() {
  isStale_ = true;
  showProgress();
}

void DownloadItem::showProgress() {
  if (hasEnded_ || pause_ || !isStale_)
    return;
  pause_.emplace(progressPause, [this] {
    pause_.reset();
    showProgress();
  });
  copyProgress();
}

void DownloadItem::copyProgress() {
  isStale_ = false;
  const auto now = progress_();
  fractionCompleted.set(now.fraction);
  totalBytes.set(now.total);
  bytesWritten.set(now.written);
}

// The transfer has told all: it may go.
void DownloadItem::end() {
  hasEnded_ = true;
  pause_.reset();
  subscriptions_.clear();
  progress_ = nullptr;
  cancel_ = nullptr;
  canBeCancelled.set(false);
}

void DownloadItem::markFinished() {
  if (hasEnded_)
    return;
  if (isStale_)
    copyProgress();
  end();
  fractionCompleted.set(1.0);
  if (*totalBytes >= 1)
    bytesWritten.set(*totalBytes);
  scope_.spawn(finishLater());
  ended.emit();
}

async::Task<void> DownloadItem::finishLater() {
  co_await async::sleep(fullBarTime);
  state.set({Kind::finished, {}});
}

void DownloadItem::markFailed(std::string error) {
  if (hasEnded_)
    return;
  end();
  state.set({Kind::failed, std::move(error)});
  ended.emit();
}

void DownloadItem::markCancelled() {
  if (hasEnded_)
    return;
  end();
  state.set({Kind::cancelled, {}});
  ended.emit();
}

void DownloadItem::cancel() {
  const auto cancel = cancel_;
  if (hasEnded_ || !*canBeCancelled)
    return;
  markCancelled();
  cancel();
}

async::Task<bool> rowTimeIsOver(std::shared_ptr<DownloadItem> item) {
  async::Signal changed;
  const auto whenEnded = item->ended.subscribe([&changed] { changed.send(); });
  const auto whenHeld = item->isHeld.observe([&changed] { changed.send(); });
  while (!item->hasEnded()) {
    const bool isSent = co_await changed.wait();
    if (!isSent)
      co_return false;
  }
  bool sleptThrough = co_await async::sleep(rowTime);
  if (!sleptThrough)
    co_return false;
  while (*item->isHeld) {
    const bool isSent = co_await changed.wait();
    if (!isSent)
      co_return false;
    if (*item->isHeld)
      continue;
    sleptThrough = co_await async::sleep(graceTime);
    if (!sleptThrough)
      co_return false;
  }
  co_return true;
}

} // namespace ondrel::web
