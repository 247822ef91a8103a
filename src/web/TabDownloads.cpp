#include "web/TabDownloads.h"

#include "async/sleep.h"
#include "base/Text.h"
#include "platform/Download.h"
#include "platform/Panels.h"
#include "web/WindowViewModel.h"
#include "web/page/DownloadItem.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace ondrel::web {

namespace {

// How long the row of a finished or failed download stays.
constexpr std::chrono::seconds rowTime{4};

// A type of this name says nothing about the file.
constexpr std::string_view anyType = "application/octet-stream";

std::string proposedFileName(const std::string& suggested) {
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
  return base::safeFileName(suggested, fmt::format("download_{}", seconds.count()));
}

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

} // namespace

TabDownloads::TabDownloads(std::weak_ptr<WindowViewModel> viewModel, platform::Panels& panels)
    : viewModel_(std::move(viewModel)), panels_(panels) {
}

TabDownloads::~TabDownloads() {
  // One may ask where to go only now.
  for (const auto& [download, running] : running_)
    download->setDestinationHandler(nullptr);
}

void TabDownloads::take(std::shared_ptr<platform::Download> download) {
  auto* key = download.get();
  auto& running = running_[key];
  running.download = std::move(download);
  running.subscriptions.push_back(key->finished.subscribe([this, key] { didEnd(key, std::nullopt); }));
  running.subscriptions.push_back(
      key->failed.subscribe([this, key](const std::string& error) { didEnd(key, error); }));
  key->setDestinationHandler([this, key](platform::Download::DestinationRequest request,
                                         platform::Download::DestinationReply reply) {
    const auto found = running_.find(key);
    if (found != running_.end())
      scope_.spawn(chooseDestination(found->second.download, std::move(request.suggestedFileName),
                                     std::move(request.mimeType), std::move(reply)));
  });
}

async::Task<void> TabDownloads::chooseDestination(std::shared_ptr<platform::Download> download,
                                                  std::string suggestedName,
                                                  std::optional<std::string> mimeType, Destination reply) {
  platform::SavePanel panel{proposedFileName(suggestedName), {}};
  if (mimeType && mimeType->contains('/') && *mimeType != anyType)
    panel.mimeTypes.push_back(std::move(*mimeType));
  const auto tab = viewModel_.lock();
  auto path = co_await panels_.runSavePanel(std::move(panel), tab ? tab->window.lock() : nullptr);
  const auto running = running_.find(download.get());
  if (!path || running == running_.end()) {
    running_.erase(download.get());
    co_return;
  }
  const auto item = std::make_shared<DownloadItem>(fileNameOf(*path), *path, download);
  running->second.item = item;
  if (const auto viewModel = viewModel_.lock()) {
    auto items = *viewModel->downloads;
    items.push_back(item);
    viewModel->downloads.set(std::move(items));
  }
  std::move(reply)(std::move(path));
}

void TabDownloads::didEnd(platform::Download* download, std::optional<std::string> error) {
  const auto running = running_.extract(download);
  if (running.empty() || !running.mapped().item)
    return;
  const auto item = running.mapped().item;
  if (error)
    item->markFailed(*std::move(error));
  else
    item->markFinished();
  scope_.spawn(retire(item));
}

async::Task<void> TabDownloads::retire(std::shared_ptr<DownloadItem> item) {
  const bool sleptThrough = co_await async::sleep(rowTime);
  const auto viewModel = viewModel_.lock();
  if (!sleptThrough || !viewModel)
    co_return;
  auto items = *viewModel->downloads;
  std::erase(items, item);
  viewModel->downloads.set(std::move(items));
}

} // namespace ondrel::web
