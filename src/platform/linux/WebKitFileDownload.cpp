#include "platform/linux/WebKitFileDownload.h"

#include "base/Text.h"
#include "platform/linux/SafeText.h"

#include <sys/stat.h>

#include <cerrno>

namespace ondrel::platform {

namespace {

// Where something is already, the engine would refuse to write too, but then remove what is there
// (measured, 2.50).
bool isFreePath(const std::string& path) {
  struct stat status{};
  return path.starts_with('/') && path.find('\0') == std::string::npos && base::isValidUtf8(path) &&
         lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

} // namespace

std::shared_ptr<WebKitFileDownload> WebKitFileDownload::make(WebKitDownload* download) {
  std::shared_ptr<WebKitFileDownload> result(new WebKitFileDownload(download));
  result->self_ = result;
  result->connectSignals();
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
        hasFailed_ = true;
        failed.emit(validUtf8(error->message));
      }));
  // Comes after a failure too.
  connections_.push_back(glib::connect<void(WebKitDownload*)>(download, "finished", [this](WebKitDownload*) {
    const auto self = shared_from_this();
    if (!hasFailed_)
      finished.emit();
    end();
  }));
}

void WebKitFileDownload::end() {
  connections_.clear();
  self_.reset();
}

void WebKitFileDownload::setDestinationHandler(DestinationHandler handler) {
  handler_ = std::move(handler);
}

void WebKitFileDownload::askForDestination(const char* suggestedName) {
  const auto self = shared_from_this();
  if (!handler_) {
    cancel();
    return;
  }
  DestinationRequest request{validUtf8(suggestedName ? suggestedName : ""), std::nullopt};
  if (auto* response = webkit_download_get_response(download_.get())) {
    if (const auto* type = webkit_uri_response_get_mime_type(response))
      request.mimeType = validUtf8(type);
  }
  DestinationReply reply(
      [download = download_](std::optional<std::string> path) {
        if (path && isFreePath(*path))
          webkit_download_set_destination(download.get(), path->c_str());
        else
          webkit_download_cancel(download.get());
      },
      std::nullopt);
  const auto handler = handler_;
  handler(std::move(request), std::move(reply));
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
  webkit_download_cancel(download_.get());
}

} // namespace ondrel::platform
