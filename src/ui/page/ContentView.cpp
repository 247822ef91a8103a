#include "ui/page/ContentView.h"

#include "base/Text.h"
#include "platform/WebView.h"
#include "platform/Window.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"
#include "web/page/TabTitle.h"

namespace ondrel::ui {

ContentView::ContentView(std::shared_ptr<web::WindowViewModel> viewModel,
                         std::shared_ptr<platform::Window> window, const web::WebServices& services,
                         const AnnouncementFiller& announcement)
    : viewModel_(std::move(viewModel)), window_(window), announcement_(announcement),
      launcher_(services.uriLauncher), root_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))),
      webView_(viewModel_, services) {
  viewModel_->window = window;
  const auto tellTitle = [this] {
    if (const auto shown = window_.lock())
      shown->setTitle(base::shortDisplayLine(web::tabTitle(*viewModel_->title, *viewModel_->urlString)));
  };
  const auto tellBusy = [this] {
    if (const auto shown = window_.lock())
      shown->setBusy(*viewModel_->isLoading);
  };
  subscriptions_.push_back(viewModel_->title.observe(tellTitle));
  subscriptions_.push_back(viewModel_->urlString.observe(tellTitle));
  subscriptions_.push_back(viewModel_->isLoading.observe(tellBusy));
  tellTitle();
  tellBusy();

  webView_.onWebViewMade = [this](platform::WebView& webView) { webViewMade(webView); };
  mapped_ = glib::connect<void(GtkWidget*)>(root_.get(), "map", [this](GtkWidget*) { appeared(); });
  window->setContent({root_.get()});
  webView_.viewDidLoad();
}

ContentView::~ContentView() {
  // The engine's view leaves the window before the web view dies with its page.
  if (pageArea_)
    pageArea_->setPage(nullptr);
}

PageArea& ContentView::pageArea() {
  if (!pageArea_) {
    pageArea_.emplace(viewModel_, launcher_);
    gtk_box_append(GTK_BOX(root_.get()), pageArea_->widget());
    if (announcement_)
      announcementSubscription_ = announcement_(pageArea_->announcementPlace());
  }
  return *pageArea_;
}

void ContentView::appeared() {
  pageArea();
  webView_.viewDidAppear();
  pageArea().focus();
}

void ContentView::webViewMade(platform::WebView& webView) {
  pageArea().setPage(GTK_WIDGET(webView.nativeView().handle));
  viewModel_->applyZoom();
  if (gtk_widget_get_mapped(root_.get()))
    pageArea().focus();
}

app::BrowserContentFactory contentFactory(const web::WebServices& services, AnnouncementFiller announcement) {
  return [&services, announcement = std::move(announcement)](std::shared_ptr<web::WindowViewModel> viewModel,
                                                             std::shared_ptr<platform::Window> window) {
    return std::make_unique<ContentView>(std::move(viewModel), std::move(window), services, announcement);
  };
}

} // namespace ondrel::ui
