#include "platform/linux/webkit/WebKitView.h"

#include "async/Deadline.h"
#include "base/Log.h"
#include "base/Text.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/webkit/WebKitEngine.h"
#include "platform/linux/webkit/WebKitEvaluation.h"
#include "platform/linux/webkit/WebKitPrinting.h"
#include "platform/linux/webkit/WebKitSessionState.h"

#include <adwaita.h>

#include <algorithm>
#include <cassert>
#include <iterator>

namespace ondrel::platform::webkit {

namespace {

constexpr const char* objectKey = "ondrel-view";

std::optional<std::string> nonEmpty(const char* text) {
  return text && *text ? std::optional(text::validUtf8(text)) : std::nullopt;
}

WebKitBackForwardListItem* currentItem(WebKitWebView* view) {
  return webkit_back_forward_list_get_current_item(webkit_web_view_get_back_forward_list(view));
}

// Two fingers change the program's zoom, which is shown and kept. The engine's own gesture would magnify the
// page besides.
void leavePinchToProgram(WebKitWebView* view) {
  const auto controllers = glib::adopt(gtk_widget_observe_controllers(GTK_WIDGET(view)));
  for (guint i = 0; i < g_list_model_get_n_items(controllers.get()); ++i) {
    const auto controller =
        glib::adopt(static_cast<GtkEventController*>(g_list_model_get_item(controllers.get(), i)));
    if (GTK_IS_GESTURE_ZOOM(controller.get()))
      gtk_event_controller_set_propagation_phase(controller.get(), GTK_PHASE_NONE);
  }
}

// Ends the page at once, whoever else still holds the object: a call into a page that hangs holds it for as
// long.
void endPage(WebKitWebView* view) {
  g_object_run_dispose(G_OBJECT(view));
}

async::Task<ScriptResult> orTimedOut(async::Duration deadline, async::Task<ScriptResult> evaluation) {
  auto result = co_await async::withDeadline(deadline, std::move(evaluation));
  if (!result)
    co_return std::unexpected(ScriptError{ScriptError::Kind::timedOut, {}});
  co_return std::move(*result);
}

} // namespace

std::shared_ptr<WebKitView> WebKitView::make(std::shared_ptr<const WebKitEngine> engine, Scripts scripts) {
  auto view = engine->makeView(scripts);
  auto result = connected(std::shared_ptr<WebKitView>(new WebKitView(std::move(engine), std::move(view))));
  result->engineScripts_ = std::make_shared<const Scripts>(std::move(scripts));
  result->takeFiles();
  leavePinchToProgram(result->view_.get());
  return result;
}

std::shared_ptr<WebKitView> WebKitView::makeDocument(std::shared_ptr<const WebKitEngine> engine) {
  auto view = engine->makeDocumentView();
  auto result = connected(std::shared_ptr<WebKitView>(new WebKitView(std::move(engine), std::move(view))));
  result->engineScripts_ = std::make_shared<const Scripts>();
  result->limitMenu();
  return result;
}

std::shared_ptr<WebKitView> WebKitView::makePopup(const Scripts& scripts) {
  auto result =
      connected(std::shared_ptr<WebKitView>(new WebKitView(engine_, engine_->makePopup(view_.get()))));
  result->engineScripts_ = engineScripts_;
  result->takeFiles();
  leavePinchToProgram(result->view_.get());
  std::ranges::copy_if(scripts, std::back_inserter(result->extraScripts_), [this](const auto& script) {
    return std::ranges::find(*engineScripts_, script) == engineScripts_->end();
  });
  return result;
}

std::shared_ptr<WebKitView> WebKitView::connected(std::shared_ptr<WebKitView> view) {
  view->connectLoads();
  view->connectQuestions();
  view->connectProperties();
  return view;
}

std::shared_ptr<WebKitView> WebKitView::of(WebKitWebView* view) {
  auto* self = static_cast<WebKitView*>(g_object_get_data(G_OBJECT(view), objectKey));
  return self ? self->weak_from_this().lock() : nullptr;
}

WebKitView::WebKitView(std::shared_ptr<const WebKitEngine> engine, glib::Ref<WebKitWebView> view)
    : engine_(std::move(engine)), view_(std::move(view)), container_(glib::share(adw_bin_new())) {
  g_object_set_data(G_OBJECT(view_.get()), objectKey, this);
  gtk_widget_set_hexpand(GTK_WIDGET(view_.get()), TRUE);
  gtk_widget_set_vexpand(GTK_WIDGET(view_.get()), TRUE);
  // A text view in there, by which the engine knows the toolkit's key bindings, would take the keyboard from
  // the page whenever the toolkit moves the focus on, as it does when a tab is selected.
  for (auto* child = gtk_widget_get_first_child(GTK_WIDGET(view_.get())); child;
       child = gtk_widget_get_next_sibling(child))
    gtk_widget_set_can_focus(child, FALSE);
  adw_bin_set_child(ADW_BIN(container_.get()), GTK_WIDGET(view_.get()));
}

WebKitView::~WebKitView() {
  connections_.clear();
  menuKey_.reset();
  pageFiles_.reset();
  g_object_set_data(G_OBJECT(view_.get()), objectKey, nullptr);
  adw_bin_set_child(ADW_BIN(container_.get()), nullptr);
  // With a turn of its own: this may be a callback of the very page.
  async::EventLoop::current().post(
      [view = std::move(view_), engine = std::move(engine_)] { endPage(view.get()); });
}

void WebKitView::addScriptMessageHandler(const std::string& name) {
  [[maybe_unused]] const bool added = handlerNames_.insert(name).second;
  assert(added && "a handler name is added once");
}

void WebKitView::removeScriptMessageHandler(const std::string& name) {
  handlerNames_.erase(name);
}

void WebKitView::load(const std::string& url) {
  loads_.requested(url);
}

void WebKitView::beginLoad(const std::string& url) {
  const auto address = text::validUtf8(url);
  if (wantedItem_ && nonEmpty(webkit_back_forward_list_item_get_uri(wantedItem_.get())) == address)
    webkit_web_view_go_to_back_forward_list_item(view_.get(), wantedItem_.get());
  else
    webkit_web_view_load_uri(view_.get(), address.c_str());
}

void WebKitView::loadHTML(const std::string& html) {
  loads_.abandoned();
  // As bytes, since it may hold a NUL.
  const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> bytes(g_bytes_new(html.data(), html.size()),
                                                                g_bytes_unref);
  webkit_web_view_load_bytes(view_.get(), bytes.get(), "text/html", "UTF-8", nullptr);
}

void WebKitView::reload() {
  if (loads_.holdsRequest()) // the page that was asked for comes anyway
    return;
  loads_.abandoned();
  webkit_web_view_reload(view_.get());
}

void WebKitView::stopLoading() {
  loads_.abandoned();
  webkit_web_view_stop_loading(view_.get());
}

void WebKitView::goBack() {
  loads_.abandoned();
  webkit_web_view_go_back(view_.get());
}

void WebKitView::goForward() {
  loads_.abandoned();
  webkit_web_view_go_forward(view_.get());
}

namespace {

// Holds the web view, which the question is a part of.
async::Task<std::optional<LeaveReply>> askToClose([[maybe_unused]] std::shared_ptr<WebKitView> held,
                                                  WebKitClosing& closing, async::Duration deadline) {
  co_return co_await closing.ask(deadline);
}

} // namespace

async::Task<std::optional<LeaveReply>> WebKitView::tryClose(async::Duration deadline) {
  return askToClose(shared_from_this(), closing_, deadline);
}

void WebKitView::terminateWebProcess() {
  webkit_web_view_terminate_web_process(view_.get());
}

bool WebKitView::isResponsive() const {
  return webkit_web_view_get_is_web_process_responsive(view_.get()) != FALSE;
}

std::optional<std::string> WebKitView::url() const {
  // The engine goes on naming the page that was not loaded (measured, 2.50).
  if (auto* shown = stayed_ ? currentItem(view_.get()) : nullptr)
    return nonEmpty(webkit_back_forward_list_item_get_uri(shown));
  return nonEmpty(webkit_web_view_get_uri(view_.get()));
}

std::optional<std::string> WebKitView::title() const {
  return nonEmpty(webkit_web_view_get_title(view_.get()));
}

bool WebKitView::canGoBack() const {
  return webkit_web_view_can_go_back(view_.get()) != FALSE;
}

bool WebKitView::canGoForward() const {
  return webkit_web_view_can_go_forward(view_.get()) != FALSE;
}

std::optional<double> WebKitView::loadProgress() const {
  return webkit_web_view_is_loading(view_.get())
             ? std::optional(webkit_web_view_get_estimated_load_progress(view_.get()))
             : std::nullopt;
}

double WebKitView::pageZoom() const {
  return webkit_web_view_get_zoom_level(view_.get());
}

void WebKitView::setPageZoom(double zoom) {
  webkit_web_view_set_zoom_level(view_.get(), zoom);
}

async::Task<ScriptResult> WebKitView::evaluate(std::string source, std::optional<FrameInfo> frame,
                                               async::Duration deadline) {
  // The main frame too when it is given: a message's frame may have left the page since.
  auto evaluation = frame ? evaluateInFrame(view_, std::move(source), std::move(*frame))
                          : evaluateInMainFrame(view_, std::move(source));
  return orTimedOut(deadline, std::move(evaluation));
}

std::optional<base::Bytes> WebKitView::interactionState() {
  return keepsHistory_ ? sessionStateOf(view_.get()) : std::nullopt;
}

bool WebKitView::restoreInteractionState(const base::Bytes& state, RestoredLoad load) {
  if (!restoreSessionState(view_.get(), state))
    return false;
  if (load == RestoredLoad::nothing)
    return true;
  loads_.restored();
  webkit_web_view_go_to_back_forward_list_item(view_.get(), currentItem(view_.get()));
  rememberWantedItem(url().value_or(std::string()));
  return true;
}

// The list stands at what the engine is on its way to, until that has failed.
void WebKitView::rememberWantedItem(const std::string& url) {
  auto* item = webkit_back_forward_list_get_current_item(webkit_web_view_get_back_forward_list(view_.get()));
  if (item && nonEmpty(webkit_back_forward_list_item_get_uri(item)) == url)
    wantedItem_ = glib::share(item);
}

async::Task<PrintResult> WebKitView::print(PrintSettings settings) {
  return printView(view_, std::move(settings));
}

NativeView WebKitView::nativeView() {
  return {container_.get()};
}

} // namespace ondrel::platform::webkit
