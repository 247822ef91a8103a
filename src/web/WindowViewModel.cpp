#include "web/WindowViewModel.h"

#include "base/Text.h"
#include "base/Url.h"
#include "platform/Application.h"
#include "platform/Panels.h"
#include "settings/AppSettings.h"
#include "web/Deadlines.h"
#include "web/MailURL.h"
#include "web/WebServices.h"

#include <cmath>

namespace ondrel::web {

std::shared_ptr<WindowViewModel> WindowViewModel::make(const WebServices& services) {
  return std::shared_ptr<WindowViewModel>(new WindowViewModel(services));
}

WindowViewModel::WindowViewModel(const WebServices& services)
    : webViewConfiguration(services.scripts.mainConfiguration()), urlString(services.settings.baseURL()),
      services_(services) {}

void WindowViewModel::setWebView(const std::shared_ptr<platform::WebView>& webView) {
  if (webView_.lock() == webView)
    return;
  webView_ = webView;
  webViewChanged.emit();
}

void WindowViewModel::loadURL() {
  auto text = std::string(base::trimmed(*urlString));
  if (text.empty())
    return;
  if (!text.contains("://"))
    text.insert(0, "https://");
  if (!base::Url::parse(text))
    return;
  if (const auto webView = liveWebView())
    webView->load(text);
}

void WindowViewModel::show(const std::string& url) {
  urlString.set(url);
  if (const auto webView = liveWebView())
    webView->load(url);
  else
    loadsURLAfterRestoring = true;
}

void WindowViewModel::goBack() {
  if (const auto webView = liveWebView())
    webView->goBack();
}

void WindowViewModel::goForward() {
  if (const auto webView = liveWebView())
    webView->goForward();
}

void WindowViewModel::reload() {
  const auto webView = liveWebView();
  if (!webView)
    return;
  const bool showsItsPage = pageProblem->kind == PageProblem::Kind::none && webView->url().value_or("") != "";
  pageProblem.set({});
  if (showsItsPage)
    webView->reload();
  else
    loadURL();
}

async::Task<platform::ScriptResult> WindowViewModel::evaluate(std::string source,
                                                              std::optional<platform::FrameInfo> frame) {
  // Held during the evaluation, so that the engine's object doesn't go away under its own callback.
  const auto webView = liveWebView();
  if (!webView)
    co_return boost::json::value();
  co_return co_await webView->evaluate(std::move(source), std::move(frame), evaluationDeadline);
}

async::Task<void> WindowViewModel::setComposeInWindow(bool composeInWindow) {
  // A page that can't take it keeps the preset value.
  [[maybe_unused]] const auto ignored =
      co_await evaluate(std::string("composeInWindow = ") + (composeInWindow ? "true" : "false") + ";");
}

void WindowViewModel::zoomIn() {
  initialPageZoom.set(*initialPageZoom + zoomStep);
  applyZoom();
}

void WindowViewModel::zoomOut() {
  initialPageZoom.set(*initialPageZoom - zoomStep);
  applyZoom();
}

void WindowViewModel::zoomToActualSize() {
  initialPageZoom.set(1.0);
  applyZoom();
}

void WindowViewModel::applyZoom() {
  const auto zoom = *initialPageZoom;
  canZoomIn.set(zoom < 1.2);
  canZoomOut.set(zoom > 0.8);
  isZoomDefault.set(std::abs(zoom - 1.0) < 0.001);
  if (const auto webView = liveWebView())
    webView->setPageZoom(zoom);
}

async::Task<void> WindowViewModel::exportPDF() {
  const auto self = shared_from_this();
  const auto webView = liveWebView();
  auto parent = window.lock();
  if (!parent)
    parent = services_.application.keyWindow();
  if (!webView || !parent)
    co_return;
  const auto name = (title->empty() ? "Document" : *title) + ".pdf";
  platform::SavePanel panel{base::safeFileName(name, "Document.pdf"), {"application/pdf"}};
  auto path = co_await services_.panels.runSavePanel(std::move(panel), parent);
  if (!path)
    co_return;
  platform::PrintSettings settings;
  settings.pdfPath = std::move(*path);
  const auto result = co_await webView->print(std::move(settings));
  if (result != platform::PrintResult::failed)
    co_return;
  platform::Alert alert{"The PDF could not be saved",
                        "Choose another folder, or see whether there is space left on the disk.",
                        platform::AlertStyle::warning,
                        {"OK"}};
  co_await services_.panels.runAlert(std::move(alert), parent);
}

bool WindowViewModel::isComposeURL() const { return web::isComposeURL(*urlString); }

} // namespace ondrel::web
