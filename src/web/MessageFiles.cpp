#include "web/MessageFiles.h"

#include "base/Text.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/FileStore.h"

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

} // namespace

MessageFiles::MessageFiles(platform::HttpClient& http, platform::FileStore& files,
                           const platform::Directories& directories, jmap::NotificationManager& notifications)
    : http_(http), files_(files), directories_(directories), notifications_(notifications) {
}

void MessageFiles::saveEml(std::string title, std::string url) {
  scope_.spawn(fetchAndSave(std::move(title), std::move(url)));
}

async::Task<void> MessageFiles::fetchAndSave(std::string title, std::string url) {
  const auto text = co_await fetchText(std::move(url));
  if (text)
    saveStringToFile(*text, base::safeFileName(title, "message") + std::string(extension));
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

void MessageFiles::saveStringToFile(const std::string& text, const std::string& filename) {
  const auto folder = directories_.downloads();
  if (!folder) {
    logger_.error("saveStringToFile: downloads directory not found");
    return;
  }
  const auto name = base::safeFileName(withoutDotPairs(filename), "message" + std::string(extension));
  const auto written = files_.writeAtomically(*folder + "/" + name, text);
  if (!written)
    logger_.error("Save failed: {}", written.error().description);
}

} // namespace ondrel::web
