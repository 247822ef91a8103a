#include "ui/page/PageArea.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "ui/widgets/Widgets.h"
#include "web/WindowViewModel.h"

#include <utility>

namespace ondrel::ui {

using Kind = web::PageProblem::Kind;

PageArea::PageArea(std::shared_ptr<web::WindowViewModel> viewModel, platform::UriLauncher& launcher)
    : viewModel_(std::move(viewModel)), launcher_(launcher),
      box_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))), announcement_(gtk_revealer_new()),
      stack_(gtk_stack_new()), overlay_(gtk_overlay_new()), notices_(stack_),
      mouseOver_(GTK_OVERLAY(overlay_), [this] { viewModel_->mouseOverString.set(""); }),
      zoomGestures_(overlay_, [this](int steps) { viewModel_->zoomBy(steps); }) {
  gtk_widget_set_name(announcement_, "announcement");
  gtk_widget_set_vexpand(stack_, TRUE);
  gtk_stack_add_child(GTK_STACK(stack_), overlay_);
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay_), load_.widget());
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay_), zoom_.widget());
  gtk_box_append(GTK_BOX(box_.get()), announcement_);
  gtk_box_append(GTK_BOX(box_.get()), notices_.widget());

  revealed_ = glib::connect<void(GObject*, GParamSpec*)>(
      announcement_, "notify::reveal-child", [this](GObject*, GParamSpec*) { announcementChanged(); });
  follow();
}

PageArea::~PageArea() = default;

void PageArea::follow() {
  subscriptions_.push_back(
      viewModel_->mouseOverString.observe([this] { mouseOver_.setAddress(*viewModel_->mouseOverString); }));
  subscriptions_.push_back(viewModel_->isLoading.observe([this] { updateLoad(); }));
  subscriptions_.push_back(viewModel_->loadProgress.observe([this] { updateLoad(); }));
  subscriptions_.push_back(
      viewModel_->initialPageZoom.observe([this] { zoom_.show(*viewModel_->initialPageZoom); }));
  subscriptions_.push_back(viewModel_->search.state.observe([this] { updateFind(); }));
  subscriptions_.push_back(viewModel_->notice.observe([this] { updateNotice(); }));
  subscriptions_.push_back(viewModel_->pageProblem.observe([this] { updateProblem(); }));
  subscriptions_.push_back(viewModel_->dialogs.shown.observe([this] { updateDialog(); }));
  subscriptions_.push_back(viewModel_->downloads.observe([this] { updateDownloads(); }));
  subscriptions_.push_back(
      viewModel_->noticed.subscribe([this](const web::PageNotice& notice) { notices_.show(notice); }));
  if (const auto notice = std::exchange(viewModel_->pendingNotice, std::nullopt))
    notices_.show(*notice);
  mouseOver_.setAddress(*viewModel_->mouseOverString);
  updateLoad();
  updateFind();
  updateNotice();
  updateProblem();
  updateDialog();
  updateDownloads();
}

void PageArea::setPage(GtkWidget* page) {
  gtk_overlay_set_child(GTK_OVERLAY(overlay_), page);
  if (page)
    gtk_widget_set_can_focus(page, !dialog_);
}

void PageArea::focus() {
  if (gtk_stack_get_visible_child(GTK_STACK(stack_)) != overlay_)
    giveFocus(stopped_->reloadButton());
  else if (dialog_)
    giveFocus(dialog_->firstFocus());
  else if (auto* page = gtk_overlay_get_child(GTK_OVERLAY(overlay_)))
    giveFocus(page);
}

std::function<void()> PageArea::reload() const {
  return [viewModel = viewModel_] { viewModel->reload(); };
}

std::function<void()> PageArea::tryAgain() const {
  return [viewModel = viewModel_] { viewModel->tryAgain(); };
}

std::function<void()> PageArea::dismissProblem() const {
  return [viewModel = viewModel_] { viewModel->pageProblem.set({}); };
}

ProblemBar::Content PageArea::loadProblem() const {
  return {.name = "load-problem",
          .icon = "network-offline-symbolic",
          .note = base::tr("Trying again…"),
          .buttons = {{base::tr("Try Now"), tryAgain()}}};
}

ProblemBar::Content PageArea::navigationProblem() const {
  return {.name = "navigation-problem",
          .icon = "network-offline-symbolic",
          .buttons = {{base::tr("Try Again"), tryAgain()}},
          .dismissed = dismissProblem()};
}

ProblemBar::Content PageArea::noApplication() const {
  return {.name = "no-application", .icon = "dialog-warning-symbolic", .dismissed = dismissProblem()};
}

ProblemBar::Content PageArea::notice() const {
  return {.name = "notice", .icon = "dialog-information-symbolic", .dismissed = [viewModel = viewModel_] {
            viewModel->notice.set("");
          }};
}

ProblemBar::Content PageArea::hang() const {
  return {.name = "page-hangs",
          .icon = "dialog-warning-symbolic",
          .note = base::tr("Reload ends what it is doing. Text that was not saved yet may be lost."),
          // TRANSLATORS: a verb: to go on waiting for a page that hangs
          .buttons = {{base::tr("Wait"), [viewModel = viewModel_] { viewModel->hangWatch.wait(); }},
                      {base::tr("Reload"), reload()}}};
}

void PageArea::updateBar(std::optional<ProblemBar>& bar, bool shown,
                         ProblemBar::Content (PageArea::*content)() const, const std::string& title,
                         const std::string& description) {
  if (shown && !bar) {
    bar.emplace((this->*content)());
    gtk_box_insert_child_after(GTK_BOX(box_.get()), bar->widget(), announcement_);
  }
  if (shown)
    bar->show(title, description);
  else if (bar)
    bar->hide();
}

// The keyboard must not be nowhere when the announcement goes with it.
void PageArea::announcementChanged() {
  auto* root = gtk_widget_get_root(announcement_);
  auto* focused = root ? gtk_root_get_focus(root) : nullptr;
  if (focused && gtk_widget_is_ancestor(focused, announcement_) &&
      !gtk_revealer_get_reveal_child(GTK_REVEALER(announcement_)))
    focus();
}

void PageArea::updateNotice() {
  const auto& text = *viewModel_->notice;
  updateBar(notice_, !text.empty(), &PageArea::notice, base::shortDisplayLine(text), "");
}

void PageArea::updateProblem() {
  const auto& problem = *viewModel_->pageProblem;
  const auto url = base::shortDisplayLine(problem.url);
  updateBar(loadProblem_, problem.kind == Kind::loadFailed, &PageArea::loadProblem,
            base::tr("Can't reach the mail service"), problem.description);
  updateBar(navigationProblem_, problem.kind == Kind::navigationFailed, &PageArea::navigationProblem,
            base::trFormat("“{}” could not be loaded", url), problem.description);
  updateBar(noApplication_, problem.kind == Kind::noApplication, &PageArea::noApplication,
            base::trFormat("No application opens “{}”", url), problem.description);
  updateBar(hang_, problem.kind == Kind::unresponsive, &PageArea::hang, base::tr("This page doesn't answer"),
            problem.description);

  const bool stopped = problem.kind == Kind::processTerminated;
  if (stopped && !stopped_) {
    stopped_.emplace(reload());
    gtk_stack_add_child(GTK_STACK(stack_), stopped_->widget());
  }
  auto* shown = stopped ? stopped_->widget() : overlay_;
  if (gtk_stack_get_visible_child(GTK_STACK(stack_)) == shown)
    return;
  gtk_stack_set_visible_child(GTK_STACK(stack_), shown);
  if (gtk_widget_get_mapped(box_.get()))
    focus();
}

void PageArea::updateDialog() {
  const bool hadOne = dialog_.has_value();
  if (hadOne)
    gtk_overlay_remove_overlay(GTK_OVERLAY(overlay_), dialog_->widget());
  dialog_.reset();
  viewModel_->mouseOverString.set("");
  if (const auto& dialog = *viewModel_->dialogs.shown)
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay_), dialog_.emplace(dialog).widget());
  if (auto* page = gtk_overlay_get_child(GTK_OVERLAY(overlay_)))
    gtk_widget_set_can_focus(page, !dialog_);
  if ((dialog_ || hadOne) && gtk_widget_get_mapped(box_.get()))
    focus();
}

void PageArea::updateLoad() {
  if (*viewModel_->isLoading)
    load_.show(*viewModel_->loadProgress);
  else
    load_.end();
}

void PageArea::updateFind() {
  if (find_ || !viewModel_->search.state->isOpen)
    return;
  find_.emplace(viewModel_->search, [this] { focus(); });
  gtk_box_insert_child_after(GTK_BOX(box_.get()), find_->widget(),
                             gtk_widget_get_prev_sibling(notices_.widget()));
}

void PageArea::updateDownloads() {
  const auto& items = *viewModel_->downloads;
  if (!downloads_ && !items.empty())
    gtk_box_append(GTK_BOX(box_.get()), downloads_.emplace(launcher_).widget());
  if (downloads_)
    downloads_->setDownloads(items);
}

} // namespace ondrel::ui
