#include "ui/page/BrowserChrome.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "platform/WebView.h"
#include "ui/commands/ObserveTab.h"
#include "ui/commands/PageKeys.h"
#include "ui/commands/PrimaryMenu.h"
#include "ui/widgets/Widgets.h"
#include "web/WindowViewModel.h"
#include "web/page/TabTitle.h"

#include <utility>

namespace ondrel::ui {

using web::WindowViewModel;

namespace {

// Pixels. In a narrower bar the buttons give way to the title; the menu has their commands too. The toolkit's
// own way of squeezing serves the title first, however long it is.
constexpr int widthWithZoom = 680;
constexpr int widthWithNewTab = 480;

GtkWidget* spacer(const char* identifier) {
  auto* widget = gtk_separator_new(GTK_ORIENTATION_VERTICAL);
  gtk_widget_set_name(widget, identifier);
  gtk_widget_add_css_class(widget, "spacer");
  return widget;
}

GtkWidget* boxOf(std::initializer_list<GtkWidget*> widgets) {
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  for (auto* widget : widgets)
    gtk_box_append(GTK_BOX(box), widget);
  return box;
}

GtkWidget* titleLabel() {
  auto* label = gtk_label_new(nullptr);
  gtk_widget_set_name(label, "title");
  gtk_widget_add_css_class(label, "title");
  gtk_label_set_single_line_mode(GTK_LABEL(label), TRUE);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  gtk_label_set_width_chars(GTK_LABEL(label), 1);
  return label;
}

// Whose page it is. A page chooses the start of its host's name as it likes, so that goes first.
GtkWidget* hostLabel() {
  auto* label = gtk_label_new(nullptr);
  gtk_widget_set_name(label, "host");
  gtk_widget_add_css_class(label, "page-host");
  gtk_widget_set_valign(label, GTK_ALIGN_CENTER);
  gtk_label_set_single_line_mode(GTK_LABEL(label), TRUE);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_START);
  gtk_label_set_width_chars(GTK_LABEL(label), 12);
  return label;
}

} // namespace

BrowserChrome::BrowserChrome(const ChromeServices& services)
    : services_(services), bar_(glib::share(adw_header_bar_new())), host_(hostLabel()), title_(titleLabel()),
      lock_(services_.settings), widthWatch_(bar_.get(), [this](int width) {
        width_ = width;
        updateVisibility();
      }) {
  gtk_widget_set_name(bar_.get(), "ondrel-browser");
  adw_header_bar_set_title_widget(ADW_HEADER_BAR(bar_.get()), boxOf({host_, title_}));
  packStart();
  packEnd();
  connections_.push_back(
      glib::connect<void(GtkWidget*)>(bar_.get(), "realize", [this](GtkWidget*) { realized(); }));
  update();
}

BrowserChrome::~BrowserChrome() = default;

void BrowserChrome::packStart() {
  back_ = tabButton("back", "go-previous-symbolic", base::tr("Back"), readsRightToLeft() ? "⌥→" : "⌥←",
                    &WindowViewModel::goBack);
  forward_ = tabButton("forward", "go-next-symbolic", base::tr("Forward"), readsRightToLeft() ? "⌥←" : "⌥→",
                       &WindowViewModel::goForward);
  reload_ =
      tabButton("reload", "view-refresh-symbolic", base::tr("Reload"), "⌘R", &WindowViewModel::reloadOrStop);
  for (auto* widget : {back_, forward_, reload_})
    adw_header_bar_pack_start(ADW_HEADER_BAR(bar_.get()), widget);
}

void BrowserChrome::packEnd() {
  newTab_ = toolbarButton("new-tab", "tab-new-symbolic", base::tr("New Tab"),
                          base::tr("New Tab") + std::string(" ⌘T"));
  onClicked(newTab_, services_.openNewTab);
  zoom_ = zoomButtons();
  // Packed from the edge inwards.
  for (auto* widget : {menuButton(), newTab_, lock_.widget(), zoom_})
    adw_header_bar_pack_end(ADW_HEADER_BAR(bar_.get()), widget);
}

GtkWidget* BrowserChrome::zoomButtons() {
  zoomOut_ =
      tabButton("zoom-out", "zoom-out-symbolic", base::tr("Zoom Out"), "⌘-", &WindowViewModel::zoomOut);
  zoomDefault_ = tabButton("zoom-default", "zoom-original-symbolic", base::tr("Actual Size"), "⌘0",
                           &WindowViewModel::zoomToActualSize);
  zoomIn_ = tabButton("zoom-in", "zoom-in-symbolic", base::tr("Zoom In"), "⌘+", &WindowViewModel::zoomIn);
  return boxOf({spacer("spacer-left"), zoomOut_, zoomDefault_, zoomIn_, spacer("spacer-right")});
}

GtkWidget* BrowserChrome::menuButton() {
  auto* button = gtk_menu_button_new();
  gtk_menu_button_set_icon_name(GTK_MENU_BUTTON(button), "open-menu-symbolic");
  gtk_menu_button_set_primary(GTK_MENU_BUTTON(button), TRUE);
  gtk_widget_set_focus_on_click(button, FALSE);
  gtk_widget_set_name(button, "menu");
  setAccessibleLabel(button, base::tr("Main Menu"));
  setTooltip(button, base::tr("Main Menu") + std::string(" F10"));
  auto* popover = gtk_popover_menu_new_from_model(services_.menu.model());
  gtk_popover_menu_add_child(GTK_POPOVER_MENU(popover), zoomRow_.widget(), ZoomRow::title);
  gtk_menu_button_set_popover(GTK_MENU_BUTTON(button), popover);
  connections_.push_back(glib::connect<void(GtkWidget*)>(popover, "show", [this](GtkWidget* shown) {
    services_.menu.explain(shown);
    services_.menuOpens();
  }));
  connections_.push_back(
      glib::connect<void(GtkWidget*)>(popover, "closed", [this](GtkWidget*) { focusPage(); }));
  return button;
}

GtkWidget* BrowserChrome::tabButton(const char* identifier, const char* icon, const char* label,
                                    const char* keys, TabWork work) {
  auto* button = toolbarButton(identifier, icon, label, std::string(label) + " " + keys);
  onClicked(button, [this, work] {
    // Held: the work may bring another tab to the front.
    if (const auto tab = tab_)
      ((*tab).*work)();
  });
  return button;
}

void BrowserChrome::onClicked(GtkWidget* button, std::function<void()> work) {
  connections_.push_back(
      glib::connect<void(GtkButton*)>(button, "clicked", [work = std::move(work)](GtkButton*) { work(); }));
}

void BrowserChrome::focusPage() {
  if (const auto page = tab_ ? tab_->liveWebView() : nullptr)
    giveFocus(static_cast<GtkWidget*>(page->nativeView().handle));
}

void BrowserChrome::selectedWindowDidChange(std::shared_ptr<platform::Window> window) {
  tabSubscriptions_.clear();
  tab_ = window ? services_.viewModelOf(window) : nullptr;
  if (tab_)
    tabSubscriptions_ = observeTab(*tab_, [this] { update(); });
  update();
}

void BrowserChrome::update() {
  const auto* tab = tab_.get();
  gtk_label_set_text(GTK_LABEL(title_),
                     tab ? base::shortDisplayLine(web::tabTitle(*tab->title, *tab->urlString)).c_str() : "");
  const auto host = tab ? base::shortDisplayLine(*tab->foreignHost) : "";
  gtk_label_set_text(GTK_LABEL(host_), host.c_str());
  gtk_widget_set_visible(host_, !host.empty());
  gtk_widget_set_sensitive(back_, tab && *tab->canGoBack);
  gtk_widget_set_sensitive(forward_, tab && *tab->canGoForward);
  gtk_widget_set_sensitive(reload_, tab != nullptr);
  updateLoading();
  zoomRow_.show(tab ? *tab->initialPageZoom : 1);
  gtk_widget_set_sensitive(zoomOut_, tab && *tab->canZoomOut);
  gtk_widget_set_sensitive(zoomDefault_, tab && !*tab->isZoomDefault);
  gtk_widget_set_sensitive(zoomIn_, tab && *tab->canZoomIn);
  updateVisibility();
}

// The button that a page was asked for with stops it, too.
void BrowserChrome::updateLoading() {
  const bool isLoading = tab_ && *tab_->isLoading;
  gtk_button_set_icon_name(GTK_BUTTON(reload_),
                           isLoading ? "process-stop-symbolic" : "view-refresh-symbolic");
  setAccessibleLabel(reload_, isLoading ? base::tr("Stop") : base::tr("Reload"));
  setTooltip(reload_, isLoading ? base::tr("Stop") + (" " + std::string(base::trIn("key", "Esc")))
                                : base::tr("Reload") + std::string(" ⌘R"));
}

// The menu is always there: it has the command that brings the others back.
void BrowserChrome::updateVisibility() {
  const bool hasToolbar = !tab_ || *tab_->toolbarVisible;
  for (auto* widget : {back_, forward_, reload_})
    gtk_widget_set_visible(widget, hasToolbar);
  gtk_widget_set_visible(zoom_, hasToolbar && width_ >= widthWithZoom);
  gtk_widget_set_visible(lock_.widget(), hasToolbar && width_ >= widthWithZoom);
  gtk_widget_set_visible(newTab_, hasToolbar && width_ >= widthWithNewTab);
}

void BrowserChrome::realized() {
  if (!std::exchange(hasPageKeys_, true))
    addPageKeys(GTK_WIDGET(gtk_widget_get_native(bar_.get())), services_.commands);
}

} // namespace ondrel::ui
