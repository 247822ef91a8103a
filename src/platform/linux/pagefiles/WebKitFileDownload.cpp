#include "platform/linux/pagefiles/WebKitFileDownload.h"

#include "base/Log.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "platform/linux/text/SafeText.h"

#include <algorithm>
#include <sys/statvfs.h>

namespace ondrel::platform::pagefiles {

namespace {

constexpr base::Logger logger("network");

constexpr guint firstErrorStatus = 400; // of HTTP

// The engine has removed its part of the file already, so that there is room again for what it had.
bool isFull(const std::string& path, std::uint64_t wanted) {
  struct statvfs disk{};
  return statvfs(path.c_str(), &disk) == 0 && std::uint64_t{disk.f_bavail} * disk.f_frsize < wanted;
}

} // namespace

std::shared_ptr<WebKitFileDownload> WebKitFileDownload::make(WebKitDownload* download,
                                                             base::Event<>& programEnds) {
  std::shared_ptr<WebKitFileDownload> result(new WebKitFileDownload(download));
  result->self_ = result;
  result->connectSignals();
  result->programEnd_ = programEnds.subscribe([result = result.get()] { result->end(); });
  return result;
}

WebKitFileDownload::WebKitFileDownload(WebKitDownload* download) : download_(glib::share(download)) {
}

void WebKitFileDownload::connectSignals() {
  auto* download = download_.get();
  connections_.push_back(glib::connect<gboolean(WebKitDownload*, const char*)>(
      download, "decide-destination", [this](WebKitDownload*, const char* suggestedName) -> gboolean {
        askForDestination(suggestedName);
        return TRUE;
      }));
  connections_.push_back(glib::connect<void(WebKitDownload*, guint64)>(download, "received-data",
                                                                       [this](WebKitDownload*, guint64) {
                                                                         const auto self = shared_from_this();
                                                                         progressed.emit();
                                                                       }));
  connections_.push_back(glib::connect<void(WebKitDownload*, GError*)>(
      download, "failed", [this](WebKitDownload*, GError* error) {
        const auto self = shared_from_this();
        fail(problem_.empty() ? reason(error) : problem_);
      }));
  // Comes after a failure too.
  connections_.push_back(glib::connect<void(WebKitDownload*)>(download, "finished", [this](WebKitDownload*) {
    const auto self = shared_from_this();
    if (!hasFailed_ && isCancelled_) {
      fail(base::tr("The download was cancelled."));
    } else if (!hasFailed_) {
      if (const auto moved = file_ ? file_->moveIntoPlace() : std::expected<void, std::string>(); !moved)
        fail(moved.error());
      else
        finished.emit();
    }
    end();
  }));
}

// What the engine says is for developers, and of a disk without space nothing.
std::string WebKitFileDownload::reason(const GError* error) const {
  if (!isCancelled_)
    logger.error("A download has failed: {}", text::validUtf8(error->message));
  const auto now = progress();
  const auto wanted = static_cast<std::uint64_t>(std::max(now.totalBytes, now.bytesWritten));
  if (file_ && isFull(file_->path().substr(0, file_->path().rfind('/')), wanted))
    return base::tr("There is no space left on the disk. Make some room and try again.");
  if (g_error_matches(error, WEBKIT_DOWNLOAD_ERROR, WEBKIT_DOWNLOAD_ERROR_CANCELLED_BY_USER))
    return base::tr("The download was cancelled.");
  if (g_error_matches(error, WEBKIT_DOWNLOAD_ERROR, WEBKIT_DOWNLOAD_ERROR_DESTINATION))
    return base::tr("The file could not be written.");
  return base::tr("The connection to the server broke off. Try again.");
}

void WebKitFileDownload::fail(const std::string& error) {
  hasFailed_ = true;
  failed.emit(error);
}

void WebKitFileDownload::end() {
  const auto self = std::move(self_);
  connections_.clear();
  programEnd_.reset();
  file_.reset();
}

void WebKitFileDownload::setDestinationHandler(DestinationHandler handler) {
  handler_ = std::move(handler);
}

void WebKitFileDownload::askForDestination(const char* suggestedName) {
  const auto self = shared_from_this();
  suggestedName_ = text::validUtf8(suggestedName ? suggestedName : "");
  if (!handler_) {
    cancel();
    return;
  }
  DestinationRequest request{suggestedName_, std::nullopt};
  if (auto* response = webkit_download_get_response(download_.get())) {
    // What comes then is a page about it, and not the file.
    if (const auto status = webkit_uri_response_get_status_code(response); status >= firstErrorStatus) {
      problem_ = base::trFormat("The server doesn't give the file (it answered {}).", status);
      cancel();
      return;
    }
    if (const auto* type = webkit_uri_response_get_mime_type(response))
      request.mimeType = text::validUtf8(type);
  }
  DestinationReply reply(
      [weak = weak_from_this(), download = download_](std::optional<std::string> path) {
        const auto self = weak.lock();
        if (self && path)
          self->write(*path);
        else
          webkit_download_cancel(download.get());
      },
      std::nullopt);
  const auto handler = handler_;
  handler(std::move(request), std::move(reply));
}

void WebKitFileDownload::write(const std::string& destination) {
  auto file = files::PendingFile::make(destination);
  if (!file) {
    problem_ = std::move(file.error());
    cancel();
    return;
  }
  file_.emplace(std::move(*file));
  webkit_download_set_destination(download_.get(), file_->path().c_str());
}

std::string WebKitFileDownload::suggestedFileName() const {
  if (!suggestedName_.empty())
    return suggestedName_;
  auto* request = webkit_download_get_request(download_.get());
  const auto url = base::Url::parse(request ? webkit_uri_request_get_uri(request) : "");
  return url ? url->lastPathComponent() : "";
}

Download::Progress WebKitFileDownload::progress() const {
  Progress result;
  result.fractionCompleted = webkit_download_get_estimated_progress(download_.get());
  result.bytesWritten = static_cast<std::int64_t>(webkit_download_get_received_data_length(download_.get()));
  auto* response = webkit_download_get_response(download_.get());
  if (const auto length = response ? webkit_uri_response_get_content_length(response) : 0; length > 0)
    result.totalBytes = static_cast<std::int64_t>(length);
  return result;
}

void WebKitFileDownload::cancel() {
  isCancelled_ = true;
  webkit_download_cancel(download_.get());
}

} // namespace ondrel::platform::pagefiles
