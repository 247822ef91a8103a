#include "web/DownloadNotices.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/Application.h"
#include "platform/UriLauncher.h"
#include "web/page/DownloadItem.h"

#include <utility>

namespace ondrel::web {

namespace {

constexpr auto category = "DOWNLOAD";
constexpr auto pathKey = "path"; // absent where there is no file

} // namespace

DownloadNotices::DownloadNotices(jmap::NotificationManager& notifications, platform::Application& application,
                                 platform::UriLauncher& launcher)
    : notifications_(notifications), application_(application), launcher_(launcher) {
  notifications_.setResponseHandler(
      category, [this](const platform::NotificationResponse& response) { respond(response); });
}

DownloadNotices::~DownloadNotices() {
  notifications_.setResponseHandler(category, nullptr);
}

void DownloadNotices::watch(std::shared_ptr<DownloadItem> item, std::weak_ptr<platform::Window> window) {
  const auto id = item->id;
  auto ended = item->ended.subscribe([this, id] { didEnd(id); });
  watched_.insert_or_assign(id, Watched{std::move(item), std::move(window), std::move(ended)});
}

void DownloadNotices::didEnd(std::uint64_t itemId) {
  const auto found = watched_.extract(itemId);
  if (found.empty())
    return;
  const auto& [item, window, ended] = found.mapped();
  const auto& state = *item->state;
  const auto focused = application_.focusedWindow();
  if (state.kind == DownloadState::Kind::cancelled || (focused && focused == window.lock()))
    return;
  const auto name = base::shortDisplayLine(item->filename);
  if (state.kind == DownloadState::Kind::failed)
    scope_.spawn(notifications_.send(base::tr("Download failed"), name + ": " + state.error, category, {}));
  else
    scope_.spawn(
        notifications_.send(base::tr("Download complete"), name, category, {{pathKey, item->destination}}));
}

// What comes with the response has stayed in this process, the path too.
void DownloadNotices::respond(const platform::NotificationResponse& response) {
  const auto& userInfo = response.request.content.userInfo;
  if (response.actionIdentifier != platform::NotificationResponse::defaultAction)
    return;
  if (const auto path = userInfo.find(pathKey); path != userInfo.end())
    scope_.spawn(show(path->second));
  else
    application_.activate();
}

async::Task<void> DownloadNotices::show(std::string path) {
  const auto shown = co_await launcher_.showFile(std::move(path));
  if (!shown)
    logger_.error("A downloaded file can't be shown: {}", shown.error());
}

} // namespace ondrel::web
