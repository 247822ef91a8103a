#include "web/TabDownloads.h"

#include "base/Text.h"
#include "platform/Download.h"
#include "platform/Panels.h"
#include "web/DownloadNotices.h"
#include "web/RunningDownloads.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"
#include "web/page/DownloadItem.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace ondrel::web {

namespace {

// A type of this name says nothing about the file.
constexpr std::string_view anyType = "application/octet-stream";
constexpr std::size_t mostWaiting = 10;

std::string proposedFileName(const std::string& suggested) {
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
  return base::safeFileName(suggested, fmt::format("download_{}", seconds.count()));
}

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

} // namespace

TabDownloads::TabDownloads(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services)
    : viewModel_(std::move(viewModel)), services_(services) {
  if (const auto tab = viewModel_.lock())
    fileMade_ = tab->fileMade.subscribe([this](const std::string& path) { listMade(path); });
}

TabDownloads::~TabDownloads() {
  // One may ask where to go only now.
  for (const auto& [download, beginning] : beginning_)
    download->setDestinationHandler(nullptr);
}

void TabDownloads::take(std::shared_ptr<platform::Download> download) {
  auto* key = download.get();
  auto& beginning = beginning_[key];
  beginning.download = std::move(download);
  beginning.failed =
      key->failed.subscribe([this, key](const std::string& error) { didFailEarly(key, error); });
  key->setDestinationHandler([this, key](platform::Download::DestinationRequest request,
                                         platform::Download::DestinationReply reply) {
    const auto found = beginning_.find(key);
    if (found == beginning_.end())
      return;
    if (waiting_.size() >= mostWaiting) {
      beginning_.erase(found);
      return;
    }
    waiting_.push_back({found->second.download, std::move(request), std::move(reply)});
    askNext();
  });
}

void TabDownloads::askNext() {
  while (!isAsking_ && !waiting_.empty()) {
    auto question = std::move(waiting_.front());
    waiting_.pop_front();
    const auto found = beginning_.find(question.download.get());
    if (found == beginning_.end())
      continue; // it has failed meanwhile
    found->second.isAsking = true;
    isAsking_ = true;
    scope_.spawn(ask(std::move(question)));
  }
}

async::Task<void> TabDownloads::ask(Question question) {
  co_await chooseDestination(std::move(question));
  isAsking_ = false;
  askNext();
}

async::Task<void> TabDownloads::chooseDestination(Question question) {
  auto& [download, request, reply] = question;
  auto& mimeType = request.mimeType;
  platform::SavePanel panel{proposedFileName(request.suggestedFileName), {}};
  if (mimeType && mimeType->contains('/') && *mimeType != anyType)
    panel.mimeTypes.push_back(std::move(*mimeType));
  const auto tab = viewModel_.lock();
  auto path = co_await services_.panels.runSavePanel(std::move(panel), tab ? tab->window.lock() : nullptr);
  const auto beginning = beginning_.extract(download.get());
  if (!path || beginning.empty())
    co_return;
  if (beginning.mapped().error) {
    showFailed(fileNameOf(*path), *path, *beginning.mapped().error);
    co_return;
  }
  const auto item = std::make_shared<DownloadItem>(fileNameOf(*path), *path, download);
  list(item);
  std::move(reply)(std::move(path));
}

// The user who is being asked where it shall go is told when they have answered.
void TabDownloads::didFailEarly(platform::Download* download, const std::string& error) {
  const auto found = beginning_.find(download);
  if (found == beginning_.end())
    return;
  if (found->second.isAsking) {
    found->second.error = error;
    return;
  }
  const auto beginning = beginning_.extract(found);
  showFailed(proposedFileName(download->suggestedFileName()), "", error);
}

void TabDownloads::showFailed(std::string filename, std::string destination, std::string error) {
  const auto item = std::make_shared<DownloadItem>(std::move(filename), std::move(destination),
                                                   DownloadState::Kind::downloading, nullptr);
  list(item);
  item->markFailed(std::move(error));
}

// As a download that was done at once.
void TabDownloads::listMade(const std::string& path) {
  const auto item =
      std::make_shared<DownloadItem>(fileNameOf(path), path, DownloadState::Kind::downloading, nullptr);
  list(item);
  item->markFinished();
}

void TabDownloads::list(const std::shared_ptr<DownloadItem>& item) {
  const auto viewModel = viewModel_.lock();
  services_.downloadNotices.watch(item, viewModel ? viewModel->window : std::weak_ptr<platform::Window>());
  show(item);
}

void TabDownloads::show(const std::shared_ptr<DownloadItem>& item) {
  services_.runningDownloads.add(item);
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  auto items = *viewModel->downloads;
  items.push_back(item);
  viewModel->downloads.set(std::move(items));
  scope_.spawn(retire(item));
}

async::Task<void> TabDownloads::retire(std::shared_ptr<DownloadItem> item) {
  const bool isOver = co_await rowTimeIsOver(item);
  const auto viewModel = viewModel_.lock();
  if (!isOver || !viewModel)
    co_return;
  auto items = *viewModel->downloads;
  std::erase(items, item);
  viewModel->downloads.set(std::move(items));
}

} // namespace ondrel::web
