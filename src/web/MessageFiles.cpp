#include "web/MessageFiles.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/FileStore.h"
#include "platform/NewFile.h"
#include "web/page/DownloadItem.h"

#include <expected>
#include <utility>

namespace ondrel::web {

namespace {

constexpr std::string_view extension = ".eml";

std::unexpected<platform::WebError> failure(int code, std::string description) {
  return std::unexpected(
      platform::WebError{platform::WebError::Domain::network, code, std::move(description)});
}

std::string withoutDotPairs(std::string name) {
  for (auto at = name.find(".."); at != name.npos; at = name.find("..", at + 1))
    name.erase(at, 1);
  return name;
}

std::string fileName(const std::string& title) {
  const std::string unnamed = base::trIn("name of a file", "message");
  const auto name = withoutDotPairs(base::safeFileName(title, unnamed) + std::string(extension));
  return base::safeFileName(name, unnamed + std::string(extension));
}

} // namespace

MessageFiles::MessageFiles(platform::HttpClient& http, platform::NewFiles& newFiles,
                           const platform::Directories& directories, jmap::NotificationManager& notifications)
    : http_(http), newFiles_(newFiles), directories_(directories), notifications_(notifications) {
}

std::shared_ptr<DownloadItem> MessageFiles::saveEml(std::string title, std::string url) {
  auto name = fileName(title);
  const auto folder = directories_.downloads();
  auto path = folder ? *folder + "/" + name : "";
  const auto task = std::make_shared<async::TaskHandle>();
  auto item = std::make_shared<DownloadItem>(std::move(name), std::move(path),
                                             DownloadState::Kind::downloading, [task] { task->cancel(); });
  *task = scope_.spawn(fetchAndSave(item, std::move(title), std::move(url)));
  return item;
}

async::Task<void> MessageFiles::fetchAndSave(std::shared_ptr<DownloadItem> item, std::string title,
                                             std::string url) {
  auto text = co_await fetchText(std::move(url));
  if (item->hasEnded())
    co_return;
  item->canBeCancelled.set(false);
  if (text)
    co_await saveStringToFile(std::move(*text), item);
  else
    item->markFailed(base::trFormat("The message could not be fetched. {}", text.error().inWords()));
  co_await notifications_.send(
      base::tr("Download complete"),
      base::trFormat("File '{}' saved in your downloads folder", title + std::string(extension)), {}, {});
}

async::Task<platform::HttpResult<std::string>> MessageFiles::fetchText(std::string url) {
  auto response = co_await http_.send({.url = std::move(url)});
  if (!response)
    co_return std::unexpected(std::move(response.error()));
  // What says that there is no such message must not take the place of one.
  if (response->status < 200 || response->status > 299)
    co_return failure(platform::WebError::badServerResponse,
                      base::trFormat("The server answered {}.", response->status));
  if (!base::isValidUtf8(response->body))
    co_return failure(platform::WebError::cannotDecodeContentData, base::tr("The content is no UTF-8."));
  co_return std::move(response->body);
}

async::Task<void> MessageFiles::saveStringToFile(std::string text, std::shared_ptr<DownloadItem> item) {
  if (item->destination.empty()) {
    logger_.error("saveStringToFile: downloads directory not found");
    item->markFailed(base::tr("There is no Downloads folder."));
    co_return;
  }
  const auto size = static_cast<std::int64_t>(text.size());
  item->setProgress(size, size);
  const auto written = co_await write(item->destination, std::move(text));
  if (written) {
    item->markFinished();
    co_return;
  }
  logger_.error("Save failed: {}", written.error());
  item->markFailed(written.error());
}

async::Task<std::expected<void, std::string>> MessageFiles::write(std::string path, std::string text) {
  const auto file = co_await newFiles_.create(std::move(path), platform::NewFiles::Existing::isReplaced);
  if (!file)
    co_return std::unexpected(file.error());
  auto written = co_await (*file)->write(std::move(text));
  if (written)
    written = co_await (*file)->finish();
  co_return written;
}

} // namespace ondrel::web
