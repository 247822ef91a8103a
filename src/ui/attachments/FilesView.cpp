#include "ui/attachments/FilesView.h"

#include "async/sleep.h"
#include "base/Translation.h"
#include "ui/attachments/AttachmentTexts.h"
#include "ui/widgets/Toast.h"
#include "ui/widgets/Widgets.h"

#include <string_view>

namespace ondrel::ui {

using attachments::FilesViewModel;

namespace {

constexpr int smallestWidth = 360;
constexpr int smallestHeight = 360;
constexpr int searchWidth = 480;
constexpr std::chrono::milliseconds patience{50};
// Pages without a row that are loaded without being asked for.
constexpr int mostEmptyPages = 5;
// Rows behind the old place where one that was there may be after a refresh.
constexpr std::size_t farBehind = 300;

GtkEventController* addController(GtkWidget* widget, GtkEventController* controller,
                                  GtkPropagationPhase phase = GTK_PHASE_BUBBLE) {
  gtk_event_controller_set_propagation_phase(controller, phase);
  gtk_widget_add_controller(widget, controller);
  return controller;
}

bool isEnter(guint key) {
  return key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter;
}

} // namespace

FilesView::FilesView(std::unique_ptr<FilesViewModel> viewModel, Services services)
    : viewModel_(std::move(viewModel)), services_(std::move(services)), selection_(*viewModel_),
      preview_(*viewModel_, services_.preview,
               {.step = [this](int step) { return neighbour(step); },
                .neighbours =
                    [this] {
                      return PreviewPanel::Neighbours{besideSelected(-1).has_value(),
                                                      besideSelected(1).has_value()};
                    }}),
      foot_(*viewModel_, [this] { loadMore(); }), loneFoot_(*viewModel_, [this] { loadMore(); }),
      emptyFoot_(*viewModel_, [this] { loadMore(); }), downloads_(services_.launcher) {
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  content_ = glib::share(box);
  gtk_widget_set_name(box, "files");
  gtk_widget_set_size_request(box, smallestWidth, smallestHeight);
  for (auto* part : {makeHeaderBar(), makeSearchBar(), makeBody(), downloads_.widget()})
    gtk_box_append(GTK_BOX(box), part);
  menu_.emplace(box, *viewModel_,
                AttachmentMenu::Actions{
                    .showEmail = [this](const auto& row) { viewModel_->showEmail(row); },
                    .download = [this](const auto& row) { viewModel_->download(row); },
                    .print = [this](const auto& row) { viewModel_->print(row); },
                    .preview = [this](const auto& row) { preview(row); },
                });
  drag_.emplace(list_->view(), *viewModel_, services_.dragged, [this](double, double y) { return rowAt(y); });
  addKeys();
  addPointer();
  follow();
  scope_.spawn(viewModel_->loadIfEmpty());
}

FilesView::~FilesView() {
  connections_.clear();
  subscriptions_.clear();
}

GtkWidget* FilesView::makeHeaderBar() {
  title_ = ADW_WINDOW_TITLE(adw_window_title_new(base::tr("Attached Files"), nullptr));
  auto* refresh = toolbarButton("refresh-attachments", "view-refresh-symbolic", base::tr("Refresh"),
                                base::tr("Refresh") + std::string(" (⌘R)"));
  connections_.push_back(
      glib::connect<void(GtkButton*)>(refresh, "clicked", [this](GtkButton*) { this->refresh(); }));
  filter_.emplace(*viewModel_);
  auto* bar = adw_header_bar_new();
  adw_header_bar_set_title_widget(ADW_HEADER_BAR(bar), GTK_WIDGET(title_));
  adw_header_bar_pack_start(ADW_HEADER_BAR(bar), refresh);
  adw_header_bar_pack_end(ADW_HEADER_BAR(bar), filter_->widget());
  return bar;
}

GtkWidget* FilesView::makeSearchBar() {
  search_ = gtk_search_entry_new();
  gtk_widget_set_name(search_, "attachments-search");
  gtk_widget_set_hexpand(search_, TRUE);
  g_object_set(search_, "search-delay", 0, nullptr);
  setPlaceholder(search_, base::tr("Search files, senders, subjects"));
  setAccessibleLabel(search_, base::tr("Search files, senders, subjects"));
  gtk_search_entry_set_key_capture_widget(GTK_SEARCH_ENTRY(search_), content_.get());
  connections_.push_back(
      glib::connect<void(GtkSearchEntry*)>(search_, "search-changed", [this](GtkSearchEntry* search) {
        viewModel_->setSearchText(gtk_editable_get_text(GTK_EDITABLE(search)));
      }));
  auto* clamp = adw_clamp_new();
  gtk_widget_add_css_class(clamp, "attachments-search");
  adw_clamp_set_maximum_size(ADW_CLAMP(clamp), searchWidth);
  adw_clamp_set_child(ADW_CLAMP(clamp), search_);
  return clamp;
}

GtkWidget* FilesView::makeBody() {
  list_.emplace(
      *viewModel_, services_.formatting, selection_, foot_.widget(),
      AttachmentList::Events{
          .menuAsked = [this](const auto& row, const auto& at) { showMenu(row, list_->widget(), at); },
          .doubleClicked = [this](const auto& row) { preview(row); },
          .endReached = [this] { loadAtEnd(); },
      });
  empty_ = ADW_STATUS_PAGE(adw_status_page_new());
  adw_status_page_set_icon_name(empty_, "mail-attachment-symbolic");
  adw_status_page_set_child(empty_, emptyFoot_.widget());
  stack_ = gtk_stack_new();
  gtk_widget_set_name(stack_, "files-content");
  gtk_widget_set_vexpand(stack_, TRUE);
  gtk_stack_add_named(GTK_STACK(stack_), list_->widget(), "list");
  gtk_stack_add_named(GTK_STACK(stack_), loneFoot_.widget(), "foot");
  gtk_stack_add_named(GTK_STACK(stack_), GTK_WIDGET(empty_), "empty");
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), "foot");
  toasts_ = ADW_TOAST_OVERLAY(adw_toast_overlay_new());
  adw_toast_overlay_set_child(toasts_, stack_);
  return GTK_WIDGET(toasts_);
}

void FilesView::addKeys() {
  const auto connectKeys = [this](GtkWidget* widget, GtkPropagationPhase phase,
                                  gboolean (FilesView::*handle)(guint, GdkModifierType)) {
    auto* keys = addController(widget, gtk_event_controller_key_new(), phase);
    connections_.push_back(glib::connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        GTK_EVENT_CONTROLLER_KEY(keys), "key-pressed",
        [this, handle](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
          return (this->*handle)(
              key, static_cast<GdkModifierType>(modifiers & gtk_accelerator_get_default_mod_mask()));
        }));
  };
  // Before the toolkit's own meaning of the keys.
  connectKeys(list_->view(), GTK_PHASE_CAPTURE, &FilesView::keyInList);
  connectKeys(search_, GTK_PHASE_CAPTURE, &FilesView::keyInSearch);
  connectKeys(content_.get(), GTK_PHASE_BUBBLE, &FilesView::keyInWindow);
}

gboolean FilesView::keyInList(guint key, GdkModifierType held) {
  auto* focus = gtk_root_get_focus(gtk_widget_get_root(content_.get()));
  // Controls inside a row have keys of their own.
  if (!focus || gtk_widget_get_parent(focus) != list_->view())
    return FALSE;
  const bool isMenu = (key == GDK_KEY_Menu && held == 0) || (key == GDK_KEY_F10 && held == GDK_SHIFT_MASK);
  if (!isMenu && (held != 0 || (key != GDK_KEY_space && key != GDK_KEY_KP_Space && !isEnter(key))))
    return FALSE;
  if (const auto position = selection_.position(); position && isMenu) {
    list_->reveal(*position, false);
    list_->showMenu(*position);
  } else if (isEnter(key)) {
    perform(&FilesViewModel::showEmail);
  } else if (const auto* row = selection_.row(); row && !isMenu) {
    preview(*row);
  }
  return TRUE;
}

gboolean FilesView::keyInSearch(guint key, GdkModifierType held) {
  if (held == 0 && key == GDK_KEY_Escape)
    return keyInWindow(key, held);
  if (held != 0 || (key != GDK_KEY_Down && key != GDK_KEY_KP_Down) || viewModel_->rowCount() == 0)
    return FALSE;
  const auto position = selection_.position().value_or(0);
  selection_.select(position);
  list_->reveal(position, true);
  return TRUE;
}

gboolean FilesView::keyInWindow(guint key, GdkModifierType held) {
  if (held == GDK_CONTROL_MASK && key == GDK_KEY_f) {
    gtk_widget_grab_focus(search_);
  } else if (held == GDK_CONTROL_MASK && key == GDK_KEY_s) {
    perform(&FilesViewModel::download);
  } else if (held == GDK_CONTROL_MASK && key == GDK_KEY_p) {
    if (const auto* row = selection_.row(); row && isPrintable(viewModel_->categoryOf(*row)))
      perform(&FilesViewModel::print);
  } else if ((held == GDK_CONTROL_MASK && key == GDK_KEY_r) || (held == 0 && key == GDK_KEY_F5)) {
    refresh();
  } else if (held == 0 && key == GDK_KEY_Escape) {
    if (*gtk_editable_get_text(GTK_EDITABLE(search_)))
      gtk_editable_set_text(GTK_EDITABLE(search_), "");
    else
      services_.close();
  } else {
    return FALSE;
  }
  return TRUE;
}

void FilesView::addPointer() {
  const auto menuAt = [this](double x, double y) {
    const auto position = list_->positionAt(y);
    if (!position)
      return;
    selection_.select(*position);
    showMenu(viewModel_->row(*position), list_->view(), {static_cast<int>(x), static_cast<int>(y), 1, 1});
  };
  auto* click = GTK_GESTURE(addController(list_->view(), GTK_EVENT_CONTROLLER(gtk_gesture_click_new())));
  gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(click), GDK_BUTTON_SECONDARY);
  connections_.push_back(glib::connect<void(GtkGestureClick*, int, double, double)>(
      GTK_GESTURE_CLICK(click), "pressed",
      [menuAt](GtkGestureClick*, int, double x, double y) { menuAt(x, y); }));
  auto* press = GTK_GESTURE(addController(list_->view(), GTK_EVENT_CONTROLLER(gtk_gesture_long_press_new())));
  gtk_gesture_single_set_touch_only(GTK_GESTURE_SINGLE(press), TRUE);
  connections_.push_back(glib::connect<void(GtkGestureLongPress*, double, double)>(
      GTK_GESTURE_LONG_PRESS(press), "pressed",
      [menuAt](GtkGestureLongPress*, double x, double y) { menuAt(x, y); }));
}

const jmap::AttachmentInfo* FilesView::rowAt(double y) const {
  const auto position = list_->positionAt(y);
  return position ? &viewModel_->row(*position) : nullptr;
}

void FilesView::showMenu(const jmap::AttachmentInfo& row, GtkWidget* widget, const GdkRectangle& at) {
  double x = 0, y = 0;
  if (gtk_widget_translate_coordinates(widget, content_.get(), at.x, at.y, &x, &y))
    menu_->show(row, {static_cast<int>(x), static_cast<int>(y), at.width, at.height});
}

void FilesView::follow() {
  const auto changed = [this] { update(); };
  subscriptions_.push_back(viewModel_->isLoading.observe(changed));
  subscriptions_.push_back(viewModel_->hasLoadedAll.observe(changed));
  subscriptions_.push_back(viewModel_->rowsChanged.subscribe([this](const auto&) {
    update();
    preview_.followRows();
  }));
  subscriptions_.push_back(selection_.changed.subscribe([this] { preview_.followRows(); }));
  subscriptions_.push_back(viewModel_->filterChanged.subscribe([this] {
    if (!isSettling_)
      scope_.spawn(settle());
  }));
  subscriptions_.push_back(viewModel_->errorMessage.observe([this] { showError(); }));
  subscriptions_.push_back(
      viewModel_->downloads.observe([this] { downloads_.setDownloads(*viewModel_->downloads); }));
}

void FilesView::update() {
  for (auto* foot : {&foot_, &loneFoot_, &emptyFoot_})
    foot->update();
  const auto& files = *viewModel_;
  const bool isFiltered = files.isFiltered();
  list_->setHasFoot(*files.isLoading || !*files.hasLoadedAll || *files.errorMessage);
  const auto since = sinceText(files.oldestLoadedDate(), services_.formatting);
  adw_window_title_set_subtitle(title_, since.c_str());
  gtk_widget_set_tooltip_text(GTK_WIDGET(title_), since.c_str());
  adw_status_page_set_title(empty_, isFiltered ? base::tr("No Matches") : base::tr("No Attachments"));
  adw_status_page_set_description(empty_, isFiltered
                                              ? base::tr("No files match the current search or filter.")
                                              : base::tr("Attachments from your mail will appear here."));
  const bool isEmpty = !*files.isLoading && (!isFiltered || *files.hasLoadedAll);
  const char* part = files.rowCount() > 0 ? "list" : isEmpty ? "empty" : "foot";
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), part);
}

void FilesView::showError() {
  update();
  const auto& error = *viewModel_->errorMessage;
  // Below the rows it would not be seen.
  if (error && viewModel_->rowCount() > 0 && !list_->isFootInSight())
    adw_toast_overlay_add_toast(toasts_, makeToast(*error).release());
}

// What is found is read from its beginning; a row that was selected is where it was when all are back.
async::Task<void> FilesView::settle() {
  isSettling_ = true;
  co_await async::sleep(std::chrono::milliseconds(0));
  isSettling_ = false;
  update();
  list_->scrollToTop();
  if (const auto position = selection_.position(); position && !viewModel_->isFiltered())
    list_->reveal(*position, false);
}

void FilesView::loadMore() {
  scope_.spawn(loadPage());
}

async::Task<void> FilesView::loadPage() {
  const auto rows = viewModel_->rowCount();
  co_await viewModel_->loadNextPage();
  // Rows move the foot, and the list tells when it is in sight then.
  if (viewModel_->rowCount() == rows && list_->isFootInSight())
    loadAtEnd();
}

// As long as that brings rows. Who searches sees the end at once, and is asked.
void FilesView::loadAtEnd() {
  const auto& files = *viewModel_;
  if (isReloading_ || *files.isLoading || *files.hasLoadedAll || files.hasPageFailed() || files.isFiltered())
    return;
  if (files.rowCount() != rowsAtLoad_)
    emptyPages_ = 0;
  else if (++emptyPages_ > mostEmptyPages)
    return;
  rowsAtLoad_ = files.rowCount();
  loadMore();
}

void FilesView::refresh() {
  if (!isReloading_)
    scope_.spawn(reload(list_->leavePlace()));
}

async::Task<void> FilesView::reload(std::optional<AttachmentList::Place> place) {
  isReloading_ = true;
  co_await viewModel_->refresh();
  // As many pages as it takes to be there again, unless the user goes elsewhere meanwhile.
  while (place && !list_->place() && !viewModel_->isFiltered()) {
    co_await async::sleep(patience); // with a page that another one has asked for
    const bool isLast = *viewModel_->hasLoadedAll || viewModel_->hasPageFailed() ||
                        viewModel_->rowCount() > place->position + farBehind;
    if (list_->goTo(*place, isLast) || isLast)
      break;
    co_await viewModel_->loadNextPage();
  }
  isReloading_ = false;
  if (list_->isFootInSight())
    loadAtEnd();
}

void FilesView::perform(void (FilesViewModel::*action)(const jmap::AttachmentInfo&)) {
  if (const auto* row = selection_.row(); row && !viewModel_->isBusy(row->id))
    ((*viewModel_).*action)(*row);
}

void FilesView::preview(const jmap::AttachmentInfo& attachment) {
  preview_.show(attachment);
}

std::optional<std::size_t> FilesView::besideSelected(int step) const {
  const auto selected = selection_.position();
  if (!selected || (step < 0 && *selected == 0))
    return std::nullopt;
  const auto next = *selected + static_cast<std::size_t>(step);
  return next < viewModel_->rowCount() ? std::optional(next) : std::nullopt;
}

const jmap::AttachmentInfo* FilesView::neighbour(int step) {
  const auto next = besideSelected(step);
  if (!next)
    return nullptr;
  selection_.select(*next);
  list_->reveal(*next, false);
  return selection_.row();
}

} // namespace ondrel::ui
