#include "web/MessageFiles.h"

#include "base/Text.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/FileWriter.h"
#include "web/page/DownloadItem.h"

#include <fmt/format.h>

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
  const auto name = withoutDotPairs(base::safeFileName(title, "message") + std::string(extension));
  return base::safeFileName(name, "message" + std::string(extension));
}

} // namespace

MessageFiles::MessageFiles(platform::HttpClient& http, platform::FileWriter& files,
                           const platform::Directories& directories, jmap::NotificationManager& notifications)
    : http_(http), files_(files), directories_(directories), notifications_(notifications) {
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
    item->markFailed("The message could not be fetched. " + text.error().description);
  co_await notifications_.send("Download complete",
                               fmt::format("File '{}{}' saved in your downloads folder", title, extension),
                               {}, {});
}

async::Task<platform::HttpResult<std::string>> MessageFiles::fetchText(std::string url) {
  auto response = co_await http_.send({.url = std::move(url)});
  if (!response)
    co_return std::unexpected(std::move(response.error()));
  // What says that there is no such message must not take the place of one.
  if (response->status < 200 || response->status > 299)
    co_return failure(platform::WebError::badServerResponse,
                      fmt::format("The server answered {}.", response->status));
  if (!base::isValidUtf8(response->body))
    co_return failure(platform::WebError::cannotDecodeContentData, "The content is no UTF-8.");
  co_return std::move(response->body);
}

async::Task<void> MessageFiles::saveStringToFile(std::string text, std::shared_ptr<DownloadItem> item) {
  if (item->destination.empty()) {
    logger_.error("saveStringToFile: downloads directory not found");
    item->markFailed("There is no Downloads folder.");
    co_return;
  }
  const auto size = static_cast<std::int64_t>(text.size());
  item->setProgress(size, size);
  const auto written = co_await files_.writeAtomically(item->destination, std::move(text));
  if (written) {
    item->markFinished();
    co_return;
  }
  logger_.error("Save failed: {}", written.error().description);
  item->markFailed("The message could not be saved: " + written.error().description + ".");
}

} // namespace ondrel::web
