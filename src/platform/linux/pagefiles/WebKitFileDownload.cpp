#include "platform/linux/pagefiles/WebKitFileDownload.h"

#include "platform/linux/text/SafeText.h"

namespace ondrel::platform::pagefiles {

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
        fail(problem_.empty() ? text::validUtf8(error->message) : problem_);
      }));
  // Comes after a failure too.
  connections_.push_back(glib::connect<void(WebKitDownload*)>(download, "finished", [this](WebKitDownload*) {
    const auto self = shared_from_this();
    if (!hasFailed_) {
      if (const auto moved = file_ ? file_->moveIntoPlace() : std::expected<void, std::string>(); !moved)
        fail(moved.error());
      else
        finished.emit();
    }
    end();
  }));
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
  if (!handler_) {
    cancel();
    return;
  }
  DestinationRequest request{text::validUtf8(suggestedName ? suggestedName : ""), std::nullopt};
  if (auto* response = webkit_download_get_response(download_.get())) {
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

} // namespace ondrel::platform::pagefiles
