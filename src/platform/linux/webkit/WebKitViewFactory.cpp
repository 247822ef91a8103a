#include "platform/linux/webkit/WebKitViewFactory.h"

#include "platform/linux/webkit/WebKitView.h"

namespace ondrel::platform::webkit {

namespace {

void handOver(WebKitDownload* download) {
  auto* page = webkit_download_get_web_view(download);
  if (const auto view = page ? WebKitView::of(page) : nullptr)
    view->didStartDownload(download);
  else
    webkit_download_cancel(download);
}

} // namespace

WebKitViewFactory::WebKitViewFactory(const WebKitOptions& options)
    : engine_(std::make_shared<const WebKitEngine>(options, handOver)), cookies_(engine_->session()),
      spelling_(engine_->context()) {
}

WebKitViewFactory::~WebKitViewFactory() {
  engine_->willEnd.emit();
}

std::shared_ptr<WebView>
WebKitViewFactory::make(const std::vector<std::shared_ptr<const UserScript>>& scripts) {
  return WebKitView::make(engine_, scripts);
}

std::shared_ptr<WebView> WebKitViewFactory::makeDocumentView() {
  return WebKitView::makeDocument(engine_);
}

} // namespace ondrel::platform::webkit
