#include "attachments/AttachmentDownloader.h"

#include "async/Signal.h"
#include "async/Timer.h"
#include "attachments/AttachmentCategory.h"
#include "attachments/FileName.h"
#include "attachments/FileTransfer.h"
#include "base/LoopbackHost.h"
#include "base/Text.h"
#include "base/Url.h"
#include "jmap/mail/MailQueries.h"
#include "platform/FileStore.h"
#include "platform/HttpClient.h"
#include "settings/AppSettings.h"
#include "web/page/DownloadItem.h"
#include "web/page/NavigationDecision.h"

#include <utility>

namespace ondrel::attachments {

namespace {

using Kind = AttachmentError::Kind;
using Existing = platform::NewFiles::Existing;

std::unexpected<AttachmentError> failure(Kind kind) {
  return std::unexpected(AttachmentError{kind});
}

// Servers answer sooner.
constexpr std::chrono::seconds shortestDoubt{2};

async::Task<void> keep(async::Task<jmap::Result<std::string>> task,
                       std::optional<jmap::Result<std::string>>& result, async::Signal& kept) {
  result = co_await std::move(task);
  kept.send();
}

// A page's link isn't followed to wherever it may lead.
bool isUserContentAddress(const std::string& text, const settings::AppSettings& settings) {
  const auto url = base::Url::parse(text);
  if (!url || !url->isWeb() || !web::isUserContent(*url, settings))
    return false;
  return base::lowercasedAscii(*url->scheme()) == "https" || base::isLoopbackHost(*url->host());
}

} // namespace

AttachmentDownloader::AttachmentDownloader(const Services& services)
    : services_(services), page_(services.webViews, services.settings, services.linkScript) {
}

std::string AttachmentDownloader::destinationOf(const jmap::AttachmentInfo& info) const {
  const auto downloads = services_.directories.downloads();
  if (!downloads)
    logger_.error("AttachmentDownloader: {}", AttachmentError{Kind::noDownloadsFolder}.description());
  return freePath(downloads.value_or(services_.directories.temporary()), info.name, services_.files);
}

std::shared_ptr<web::DownloadItem> AttachmentDownloader::download(const jmap::AttachmentInfo& info) {
  auto place = queue_.take();
  const auto path = destinationOf(info);
  const auto task = std::make_shared<async::TaskHandle>();
  const auto state =
      place.isFirst() ? web::DownloadState::Kind::downloading : web::DownloadState::Kind::waiting;
  auto item = std::make_shared<web::DownloadItem>(path.substr(path.rfind('/') + 1), path, state,
                                                  [task] { task->cancel(); });
  *task = scope_.spawn(runDownload(std::move(place), info, item));
  return item;
}

async::Task<void> AttachmentDownloader::runDownload(JobQueue::Place place, jmap::AttachmentInfo info,
                                                    std::shared_ptr<web::DownloadItem> item) {
  const bool isTurn = co_await place.turn();
  if (!isTurn)
    co_return;
  item->markStarted();
  logger_.debug("AttachmentDownloader: starting download of {} (email {}, blob {})", info.name, info.emailId,
                info.blobId);
  const auto done = co_await downloadTo(info, item);
  if (done) {
    item->markFinished();
    logger_.debug("AttachmentDownloader: wrote {} to {}", info.name, item->destination);
  } else if (!item->hasEnded()) {
    logger_.error("AttachmentDownloader: failed to download {}: {}", info.name, done.error().description());
    item->markFailed(done.error().description());
  }
}

async::Task<Result<void>> AttachmentDownloader::downloadTo(jmap::AttachmentInfo info,
                                                           std::shared_ptr<web::DownloadItem> item) {
  const auto size = info.size;
  auto url = co_await address(std::move(info));
  if (!url)
    co_return std::unexpected(url.error());
  co_return co_await fetchToFile(
      services_.http, services_.newFiles,
      {.url = std::move(*url), .path = item->destination, .existing = Existing::stays, .size = size},
      {.progressed = [item](auto written, auto total) { item->setProgress(written, total); },
       .arrived = [item] { item->canBeCancelled.set(false); }});
}

async::Task<Result<std::string>> AttachmentDownloader::address(jmap::AttachmentInfo info) {
  page_.open(); // while the server is asked
  const bool nobody = co_await services_.mail.isSignInShown();
  if (nobody)
    co_return failure(Kind::notSignedIn);
  const auto emailURL = co_await emailAddress(info.emailId);
  if (!emailURL)
    co_return std::unexpected(emailURL.error());
  logger_.debug("AttachmentDownloader: resolved email URL {}", *emailURL);
  auto href = co_await page_.resolveAttachmentHref(*emailURL, info.blobId);
  if (!href)
    co_return href;
  logger_.debug("AttachmentDownloader: resolved attachment href {}", base::Private{*href});
  if (!isUserContentAddress(*href, services_.settings))
    co_return failure(Kind::invalidResponse);
  co_return href;
}

// A client whose sign-in has just ended tries for a minute to get a new token. A page says so at once.
async::Task<Result<std::string>> AttachmentDownloader::emailAddress(std::string emailId) {
  std::optional<jmap::Result<std::string>> url;
  async::Signal changed;
  const async::Timer patience(shortestDoubt, [&changed] { changed.send(); });
  async::Scope asking;
  asking.spawn(keep(services_.mail.messageURL(std::move(emailId)), url, changed));
  bool came = co_await changed.wait();
  if (came && !url) {
    const bool nobody = co_await page_.isSignInShown([&url] { return !url; });
    if (nobody && !url)
      co_return failure(Kind::notSignedIn);
  }
  while (came && !url)
    came = co_await changed.wait();
  if (!came)
    co_return failure(Kind::cancelled);
  if (!*url && url->error().kind == jmap::JMAPError::Kind::notAuthenticated)
    co_return failure(Kind::notSignedIn);
  if (!*url)
    co_return std::unexpected(AttachmentError::told(url->error().inWords()));
  co_return **url;
}

async::Task<Result<std::string>> AttachmentDownloader::data(jmap::AttachmentInfo info) {
  auto url = co_await address(std::move(info));
  if (!url)
    co_return url;
  auto response = co_await services_.http.send({.url = std::move(*url)});
  if (!response)
    co_return std::unexpected(AttachmentError::told(response.error().inWords()));
  if (response->status < 200 || response->status > 299)
    co_return std::unexpected(AttachmentError::httpError(response->status));
  co_return std::move(response->body);
}

async::Task<Result<void>> AttachmentDownloader::fetchFile(jmap::AttachmentInfo info, std::string path,
                                                          std::function<void()> begun) {
  return runFile(queue_.take(), std::move(info), std::move(path), std::move(begun));
}

async::Task<Result<void>> AttachmentDownloader::runFile(JobQueue::Place place, jmap::AttachmentInfo info,
                                                        std::string path, std::function<void()> begun) {
  const bool isTurn = co_await place.turn();
  if (!isTurn)
    co_return failure(Kind::cancelled);
  begun();
  const auto size = info.size;
  auto url = co_await address(std::move(info));
  if (!url)
    co_return std::unexpected(url.error());
  co_return co_await fetchToFile(
      services_.http, services_.newFiles,
      {.url = std::move(*url), .path = std::move(path), .existing = Existing::isReplaced, .size = size},
      {.progressed = [](auto, auto) {}, .arrived = [] {}});
}

async::Task<Result<platform::PicturePointer>> AttachmentDownloader::thumbnail(jmap::AttachmentInfo info,
                                                                              std::function<void()> begun) {
  return runThumbnail(queue_.take(), std::move(info), std::move(begun));
}

async::Task<Result<platform::PicturePointer>>
AttachmentDownloader::runThumbnail(JobQueue::Place place, jmap::AttachmentInfo info,
                                   std::function<void()> begun) {
  const bool isTurn = co_await place.turn();
  if (!isTurn)
    co_return failure(Kind::cancelled);
  begun();
  auto bytes = co_await data(info);
  if (!bytes)
    co_return std::unexpected(bytes.error());
  const bool isPdf = category(services_.types, info.type) == AttachmentCategory::pdf;
  auto picture = co_await services_.decoder.thumbnail(
      std::move(*bytes), isPdf ? platform::DocumentKind::pdf : platform::DocumentKind::image, thumbnailSide);
  if (!picture)
    logger_.debug("AttachmentDownloader: {} can't be decoded: {}", info.name, picture.error().description);
  if (!picture || !*picture)
    co_return failure(Kind::invalidResponse);
  co_return std::move(*picture);
}

} // namespace ondrel::attachments
