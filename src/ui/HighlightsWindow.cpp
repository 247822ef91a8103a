#include "ui/HighlightsWindow.h"

#include "base/Url.h"
#include "highlights/HighlightStore.h"
#include "platform/Application.h"
#include "platform/Download.h"
#include "platform/WebView.h"
#include "ui/Widgets.h"
#include "ui/WindowFrameAutosave.h"

#include <adwaita.h>

namespace ondrel::ui {

namespace {

constexpr const char* frameName = "highlights-window";
constexpr int smallestWidth = 480;
constexpr int smallestHeight = 360;
constexpr int spinnerSize = 32;
// What a page without an address counts as.
constexpr std::string_view blankPage = "about:blank";

GtkWidget* spinner() {
  auto* widget = gtk_spinner_new();
  gtk_widget_set_size_request(widget, spinnerSize, spinnerSize);
  gtk_widget_set_halign(widget, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
  gtk_spinner_start(GTK_SPINNER(widget));
  setAccessibleLabel(widget, "Loading Highlights");
  return widget;
}

// "M1" of an address that ends in "/T1.M1".
std::optional<std::string> emailIdIn(const base::Url& url) {
  auto last = url.lastPathComponent();
  while (last.ends_with('.'))
    last.pop_back();
  if (last.empty())
    return std::nullopt;
  return last.substr(last.rfind('.') + 1);
}

} // namespace

HighlightsWindow::HighlightsWindow(Services services) : services_(std::move(services)) {
  subscriptions_.push_back(services_.application.windowWillClose.subscribe([this](const auto& window) {
    if (window_ && window == window_)
      forget();
  }));
  subscriptions_.push_back(services_.application.willTerminate.subscribe([this] { keepFrame(); }));
}

HighlightsWindow::~HighlightsWindow() {
  if (page_)
    page_->setDelegate(nullptr);
}

void HighlightsWindow::show() {
  if (!window_)
    open();
  window_->makeKeyAndOrderFront();
}

void HighlightsWindow::open() {
  platform::WindowAttributes attributes;
  attributes.contentWidth = 760;
  attributes.contentHeight = 680;
  attributes.identifier = "highlights";
  attributes.standalone = true;
  window_ = services_.application.makeWindow(attributes);
  window_->setTitle("Highlights");
  window_->setTabbingMode(platform::TabbingMode::disallowed);
  if (const auto frame = savedFrame(services_.defaults, frameName))
    window_->setFrame(*frame);
  content_ = makeContent();
  window_->setContent({content_.get()});
  scope_.emplace().spawn(fill());
}

void HighlightsWindow::keepFrame() {
  if (window_)
    saveFrame(services_.defaults, frameName, window_->frame());
}

void HighlightsWindow::forget() {
  keepFrame();
  scope_.reset();
  connections_.clear();
  storeSubscription_.reset();
  if (page_)
    page_->setDelegate(nullptr);
  page_.reset();
  stopped_.reset();
  stack_ = nullptr;
  content_ = nullptr;
  html_.clear();
  window_.reset();
}

glib::Ref<GtkWidget> HighlightsWindow::makeContent() {
  stack_ = gtk_stack_new();
  gtk_widget_set_name(stack_, "highlights-content");
  gtk_widget_set_vexpand(stack_, TRUE);
  gtk_stack_add_named(GTK_STACK(stack_), spinner(), "loading");
  stopped_.emplace([this] { loadPage(); });
  gtk_stack_add_named(GTK_STACK(stack_), stopped_->widget(), "stopped");

  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_set_name(box, "highlights");
  gtk_widget_set_size_request(box, smallestWidth, smallestHeight);
  gtk_box_append(GTK_BOX(box), makeHeaderBar());
  gtk_box_append(GTK_BOX(box), stack_);

  auto* keys = gtk_event_controller_key_new();
  connections_.push_back(glib::connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
      keys, "key-pressed",
      [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
        const auto held = modifiers & gtk_accelerator_get_default_mod_mask();
        if (key != GDK_KEY_Escape || held != 0)
          return FALSE;
        const auto window = window_;
        window->performClose();
        return TRUE;
      }));
  gtk_widget_add_controller(box, keys);
  return glib::share(box);
}

GtkWidget* HighlightsWindow::makeHeaderBar() {
  auto* button = toolbarButton("export-highlights", "document-save-symbolic", "Export Highlights…",
                               "Export Highlights to html file.");
  connections_.push_back(glib::connect<void(GtkButton*)>(
      button, "clicked", [this](GtkButton*) { services_.exportHighlights(); }));
  const auto update = [this, button] {
    gtk_widget_set_sensitive(button, !services_.store.byMessageId().empty());
  };
  storeSubscription_ = services_.store.changed.subscribe(update);
  update();
  auto* bar = adw_header_bar_new();
  adw_header_bar_set_title_widget(ADW_HEADER_BAR(bar), adw_window_title_new("Highlights", nullptr));
  adw_header_bar_pack_end(ADW_HEADER_BAR(bar), button);
  return bar;
}

async::Task<void> HighlightsWindow::fill() {
  html_ = co_await services_.generateHTML();
  page_ = services_.webViews.makeDocumentView();
  page_->setDelegate(this);
  auto* widget = static_cast<GtkWidget*>(page_->nativeView().handle);
  setAccessibleLabel(widget, "Highlights");
  gtk_stack_add_named(GTK_STACK(stack_), widget, "page");
  loadPage();
}

void HighlightsWindow::loadPage() {
  showPart("loading");
  page_->loadHTML(html_);
}

void HighlightsWindow::showPart(const char* name) {
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), name);
}

void HighlightsWindow::decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) {
  if (action.type != platform::NavigationType::linkActivated) {
    // Its own page and no other: something may be dropped on it.
    const bool isOwnPage = !action.url || *action.url == blankPage;
    std::move(reply)(isOwnPage ? platform::NavigationPolicy::allow : platform::NavigationPolicy::cancel);
    return;
  }
  std::move(reply)(platform::NavigationPolicy::cancel);
  const auto url = action.url ? base::Url::parse(*action.url) : std::nullopt;
  // An address that the project doesn't have is an empty link, to this page.
  if (url && url->isWeb())
    services_.navigate(url->absoluteString(), emailIdIn(*url));
}

void HighlightsWindow::decidePolicy(const platform::NavigationResponse&, platform::PolicyReply reply) {
  std::move(reply)(platform::NavigationPolicy::allow);
}

} // namespace ondrel::ui
