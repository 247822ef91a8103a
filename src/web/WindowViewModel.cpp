#include "web/WindowViewModel.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "platform/Application.h"
#include "platform/Deadlines.h"
#include "settings/AppSettings.h"
#include "web/TabPrinting.h"
#include "web/WebServices.h"
#include "web/page/MailURL.h"

#include <cmath>

namespace ondrel::web {

namespace {

// The tasks below take what they need by value: a task starts on a later turn, when the tab may be gone.

// Holds the web view, so that the engine's object doesn't go away under its own callback.
async::Task<platform::ScriptResult> evaluateIn(std::shared_ptr<platform::WebView> webView, std::string source,
                                               std::optional<platform::FrameInfo> frame) {
  if (!webView)
    co_return boost::json::value();
  co_return co_await webView->evaluate(std::move(source), std::move(frame), platform::evaluationDeadline);
}

async::Task<platform::ScriptResult> refuse() {
  co_return std::unexpected(platform::ScriptError{platform::ScriptError::Kind::exception,
                                                  base::tr("the page is none of the service's")});
}

// A page that can't take it keeps what it has.
async::Task<void> evaluateQuietly(async::Task<platform::ScriptResult> evaluation) {
  [[maybe_unused]] const auto ignored = co_await std::move(evaluation);
}

async::Task<std::optional<platform::LeaveReply>> askToClose(std::shared_ptr<WindowViewModel> viewModel) {
  const auto webView = viewModel->liveWebView();
  // What hangs is not waited for again.
  if (!webView || viewModel->pageProblem->kind == PageProblem::Kind::unresponsive)
    co_return std::nullopt;
  const auto quiet = viewModel->dialogs.mute();
  co_return co_await webView->tryClose(platform::closeDeadline);
}

async::Task<void> nothing() {
  co_return;
}

} // namespace

std::shared_ptr<WindowViewModel> WindowViewModel::make(const WebServices& services) {
  return std::shared_ptr<WindowViewModel>(new WindowViewModel(services));
}

WindowViewModel::WindowViewModel(const WebServices& services)
    : initialPageZoom(services.settings.defaultPageZoom()),
      webViewConfiguration(services.scripts.mainConfiguration()), urlString(services.settings.baseURL()),
      services_(services) {
  dialogs.onFlood = [this] { hangWatch.tellHang(); };
}

void WindowViewModel::setWebView(const std::shared_ptr<platform::WebView>& webView) {
  if (webView_.lock() == webView)
    return;
  webView_ = webView;
  search.setPage(webView_);
  webViewChanged.emit();
}

void WindowViewModel::tell(PageNotice told) {
  if (noticed.hasSubscribers())
    noticed.emit(told);
  else
    pendingNotice = std::move(told);
}

void WindowViewModel::loadURL() {
  auto text = std::string(base::trimmed(*urlString));
  if (text.empty())
    return;
  if (!text.contains("://"))
    text.insert(0, "https://");
  if (!base::Url::parse(text))
    return;
  dialogs.userLoads();
  if (const auto webView = liveWebView())
    webView->load(text);
}

void WindowViewModel::show(const std::string& url) {
  urlString.set(url);
  dialogs.userLoads();
  if (const auto webView = liveWebView())
    webView->load(url);
  else if (auto* restored = std::get_if<RestoredPage>(&firstPage))
    restored->isReplaced = true;
}

void WindowViewModel::goBack() {
  dialogs.userLoads();
  if (const auto webView = liveWebView())
    webView->goBack();
}

void WindowViewModel::goForward() {
  dialogs.userLoads();
  if (const auto webView = liveWebView())
    webView->goForward();
}

void WindowViewModel::reload() {
  const auto webView = liveWebView();
  if (!webView)
    return;
  const auto kind = pageProblem->kind;
  if (kind == PageProblem::Kind::unresponsive)
    webView->terminateWebProcess();
  dialogs.userLoads();
  if (kind == PageProblem::Kind::loadFailed) {
    tryAgain();
    return;
  }
  const bool hasProcess =
      kind != PageProblem::Kind::processTerminated && kind != PageProblem::Kind::unresponsive;
  const bool showsItsPage = hasProcess && !webView->url().value_or("").empty();
  pageProblem.set({});
  if (showsItsPage)
    webView->reload();
  else
    loadURL();
}

void WindowViewModel::reloadOrStop() {
  if (*isLoading)
    stop();
  else
    reload();
}

async::Task<std::optional<platform::LeaveReply>> WindowViewModel::tryClose() {
  return askToClose(shared_from_this());
}

void WindowViewModel::tryAgain() {
  if (!pageProblem->url.empty())
    urlString.set(pageProblem->url);
  pageProblem.set({});
  loadURL();
}

bool WindowViewModel::showsService() const {
  const auto webView = liveWebView();
  const auto url = webView ? webView->url() : std::nullopt;
  // The address is that of a load that is under way.
  return url && foreignHost->empty() && services_.settings.isServiceOrigin(*url);
}

async::Task<platform::ScriptResult> WindowViewModel::evaluate(std::string source,
                                                              std::optional<platform::FrameInfo> frame) {
  const auto webView = liveWebView();
  if (webView && (!frame || frame->isMainFrame) && !showsService())
    return refuse();
  return evaluateIn(webView, std::move(source), std::move(frame));
}

async::Task<void> WindowViewModel::setComposeInWindow(bool composeInWindow) {
  return evaluateQuietly(
      evaluate(std::string("composeInWindow = ") + (composeInWindow ? "true" : "false") + ";"));
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

void WindowViewModel::zoomBy(int steps) {
  for (; steps > 0 && *canZoomIn; --steps)
    zoomIn();
  for (; steps < 0 && *canZoomOut; ++steps)
    zoomOut();
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
  const auto webView = liveWebView();
  auto parent = window.lock();
  if (!parent)
    parent = services_.application.focusedWindow();
  if (!webView || !parent)
    return nothing();
  return exportAsPDF(shared_from_this(), std::move(parent), services_);
}

async::Task<void> WindowViewModel::print() {
  return printWithPanel(shared_from_this(), services_);
}

std::optional<std::string> WindowViewModel::accountParameter() const {
  const auto url = base::Url::parse(*urlString);
  const bool isOfService = url && services_.settings.isServiceOrigin(*urlString);
  return isOfService ? url->queryItem("u") : std::nullopt;
}

bool WindowViewModel::isComposeURL() const {
  return web::isComposeURL(*urlString);
}

bool WindowViewModel::isWritingLetter() const {
  return isComposeURL() || reportsWriting || webViewConfiguration == services_.scripts.composeConfiguration();
}

} // namespace ondrel::web
