#include "ui/highlights/HighlightsWindow.h"

#include "base/Translation.h"
#include "base/Url.h"
#include "highlights/file/HighlightStore.h"
#include "platform/Application.h"
#include "ui/widgets/Widgets.h"
#include "ui/widgets/WindowFrameAutosave.h"

#include <adwaita.h>

namespace ondrel::ui {

namespace {

constexpr const char* frameName = "highlights-window";
constexpr int smallestWidth = 360;
constexpr int smallestHeight = 360;
constexpr int spinnerSize = 32;
constexpr int searchWidth = 480;

// For the place of the list, until there is one.
GtkWidget* largeSpinner() {
  auto* widget = gtk_spinner_new();
  gtk_widget_set_size_request(widget, spinnerSize, spinnerSize);
  gtk_widget_set_halign(widget, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
  gtk_spinner_start(GTK_SPINNER(widget));
  setAccessibleLabel(widget, base::tr("Loading Highlights"));
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
  subscriptions_.push_back(services_.application.aboutToQuit.subscribe([this] { keepFrame(); }));
}

void HighlightsWindow::show() {
  if (!window_)
    open();
  window_->present();
}

void HighlightsWindow::open() {
  platform::WindowAttributes attributes;
  attributes.contentWidth = 760;
  attributes.contentHeight = 680;
  attributes.identifier = "highlights";
  attributes.standalone = true;
  window_ = services_.application.makeWindow(attributes);
  window_->setTitle(base::tr("Highlights"));
  window_->setTabbingMode(platform::TabbingMode::disallowed);
  if (const auto frame = savedFrame(services_.defaults, frameName))
    window_->setFrame(*frame);
  content_ = makeContent();
  window_->setContent({content_.get()});
  list_.emplace(services_.store, services_.highlightExport);
  listChanged_ = list_->changed.subscribe([this](bool isSearch) { update(isSearch); });
  update(false);
}

void HighlightsWindow::keepFrame() {
  if (window_)
    saveFrame(services_.defaults, frameName, window_->frame());
}

void HighlightsWindow::forget() {
  keepFrame();
  connections_.clear();
  listChanged_.reset();
  page_.reset();
  list_.reset();
  stopped_.reset();
  problem_.reset();
  content_ = nullptr;
  window_.reset();
}

glib::Ref<GtkWidget> HighlightsWindow::makeContent() {
  stack_ = gtk_stack_new();
  gtk_widget_set_name(stack_, "highlights-content");
  gtk_widget_set_vexpand(stack_, TRUE);
  gtk_stack_add_named(GTK_STACK(stack_), largeSpinner(), "loading");
  stopped_.emplace([this] {
    showPart("loading");
    page_->reload();
  });
  gtk_stack_add_named(GTK_STACK(stack_), stopped_->widget(), "stopped");
  problem_.emplace(
      ProblemBar::Content{.name = "highlights-problem",
                          .icon = "dialog-warning-symbolic",
                          .buttons = {{base::tr("Try Again"), [this] { list_->lookUpAgain(); }}}});

  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_set_name(box, "highlights");
  gtk_widget_set_size_request(box, smallestWidth, smallestHeight);
  gtk_box_append(GTK_BOX(box), makeHeaderBar());
  gtk_box_append(GTK_BOX(box), makeSearchBar());
  gtk_box_append(GTK_BOX(box), problem_->widget());
  gtk_box_append(GTK_BOX(box), stack_);
  addKeys(box);
  return glib::share(box);
}

GtkWidget* HighlightsWindow::makeHeaderBar() {
  exportButton_ = toolbarButton("export-highlights", "document-save-symbolic", base::tr("Export Highlights…"),
                                base::tr("Export Highlights to html file."));
  connections_.push_back(glib::connect<void(GtkButton*)>(
      exportButton_, "clicked", [this](GtkButton*) { services_.exportHighlights(); }));
  searchButton_ = gtk_toggle_button_new();
  gtk_button_set_icon_name(GTK_BUTTON(searchButton_), "edit-find-symbolic");
  gtk_widget_set_name(searchButton_, "search-highlights");
  setAccessibleLabel(searchButton_, base::tr("Search Highlights"));
  setTooltip(searchButton_, base::tr("Search Highlights") + std::string(" (⌘F)"));
  spinner_ = gtk_spinner_new();
  gtk_widget_set_name(spinner_, "highlights-working");
  setAccessibleLabel(spinner_, base::tr("Looking Up Messages"));
  gtk_widget_set_tooltip_text(spinner_, base::tr("Looking Up Messages"));
  auto* bar = adw_header_bar_new();
  adw_header_bar_set_title_widget(ADW_HEADER_BAR(bar), adw_window_title_new(base::tr("Highlights"), nullptr));
  adw_header_bar_pack_start(ADW_HEADER_BAR(bar), searchButton_);
  adw_header_bar_pack_start(ADW_HEADER_BAR(bar), spinner_);
  adw_header_bar_pack_end(ADW_HEADER_BAR(bar), exportButton_);
  return bar;
}

GtkWidget* HighlightsWindow::makeSearchBar() {
  auto* entry = gtk_search_entry_new();
  gtk_widget_set_name(entry, "highlights-search");
  gtk_widget_set_hexpand(entry, TRUE);
  setPlaceholder(entry, base::tr("Search text and subjects"));
  setAccessibleLabel(entry, base::tr("Search Highlights"));
  connections_.push_back(
      glib::connect<void(GtkSearchEntry*)>(entry, "search-changed", [this](GtkSearchEntry* search) {
        list_->search(gtk_editable_get_text(GTK_EDITABLE(search)));
      }));
  auto* clamp = adw_clamp_new();
  adw_clamp_set_maximum_size(ADW_CLAMP(clamp), searchWidth);
  adw_clamp_set_child(ADW_CLAMP(clamp), entry);
  searchBar_ = gtk_search_bar_new();
  gtk_search_bar_set_child(GTK_SEARCH_BAR(searchBar_), clamp);
  gtk_search_bar_connect_entry(GTK_SEARCH_BAR(searchBar_), GTK_EDITABLE(entry));
  g_object_bind_property(searchBar_, "search-mode-enabled", searchButton_, "active",
                         static_cast<GBindingFlags>(G_BINDING_BIDIRECTIONAL | G_BINDING_SYNC_CREATE));
  return searchBar_;
}

void HighlightsWindow::addKeys(GtkWidget* box) {
  auto* keys = gtk_event_controller_key_new();
  connections_.push_back(glib::connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
      keys, "key-pressed",
      [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
        const auto held = modifiers & gtk_accelerator_get_default_mod_mask();
        if (key == GDK_KEY_f && held == GDK_CONTROL_MASK && gtk_widget_get_sensitive(searchButton_)) {
          gtk_search_bar_set_search_mode(GTK_SEARCH_BAR(searchBar_), TRUE);
          giveFocus(gtk_search_bar_get_child(GTK_SEARCH_BAR(searchBar_)));
          return TRUE;
        }
        if (key != GDK_KEY_Escape || held != 0)
          return FALSE;
        const auto window = window_;
        window->requestClose();
        return TRUE;
      }));
  gtk_widget_add_controller(box, keys);
}

void HighlightsWindow::openPage() {
  page_.emplace(services_.webViews, HighlightsPage::Events{
                                        .shown = [this] { showPart("page"); },
                                        .stopped = [this] { showPart("stopped"); },
                                        .clicked =
                                            [this](const std::string& url) {
                                              services_.navigate(url, emailIdIn(*base::Url::parse(url)));
                                            },
                                    });
  auto* widget = static_cast<GtkWidget*>(page_->widget());
  setAccessibleLabel(widget, base::tr("Highlights"));
  gtk_stack_add_named(GTK_STACK(stack_), widget, "page");
}

void HighlightsWindow::update(bool isSearch) {
  const bool hasHighlights = !services_.store.byMessageId().empty();
  gtk_widget_set_sensitive(exportButton_, hasHighlights);
  gtk_widget_set_sensitive(searchButton_, hasHighlights);
  if (!hasHighlights)
    gtk_search_bar_set_search_mode(GTK_SEARCH_BAR(searchBar_), FALSE);
  const bool isWorking = list_->isLookingUp() && list_->document();
  gtk_spinner_set_spinning(GTK_SPINNER(spinner_), isWorking);
  gtk_widget_set_visible(spinner_, isWorking);
  if (list_->problem().empty())
    problem_->hide();
  else
    problem_->show(list_->problem(), base::tr("Subjects and links of some messages are missing."));
  if (!list_->document())
    return;
  if (!page_)
    openPage();
  page_->show(*list_->document(), !isSearch);
}

void HighlightsWindow::showPart(const char* name) {
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), name);
}

} // namespace ondrel::ui
