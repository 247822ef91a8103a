#include "ui/page/DownloadRow.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "platform/UriLauncher.h"
#include "ui/widgets/ButtonRow.h"
#include "ui/widgets/SideOrBelow.h"
#include "ui/widgets/Widgets.h"
#include "web/page/DownloadItem.h"

#include <algorithm>
#include <cmath>

namespace ondrel::ui {

using Kind = web::DownloadState::Kind;

namespace {

std::string size(std::int64_t bytes) {
  return glib::CString(g_format_size(static_cast<guint64>(std::max<std::int64_t>(bytes, 0)))).get();
}

const char* iconName(Kind kind) {
  switch (kind) {
  case Kind::waiting:
  case Kind::downloading:
    return "folder-download-symbolic";
  case Kind::finished:
    return "emblem-ok-symbolic";
  case Kind::failed:
    return "dialog-error-symbolic";
  case Kind::cancelled:
    return "process-stop-symbolic";
  }
  return "";
}

} // namespace

std::string downloadStatus(const web::DownloadItem& item) {
  switch (item.state->kind) {
  case Kind::waiting:
    return base::trIn("download", "Waiting");
  case Kind::downloading:
    // Not every server tells how much there is.
    return *item.totalBytes < 0
               ? size(*item.bytesWritten)
               // TRANSLATORS: how much of a file has come, as 1.2 MB / 3.4 MB
               : base::trFormat("{0} / {1}", size(*item.bytesWritten), size(*item.totalBytes));
  case Kind::finished:
    return base::trIn("download", "Done");
  case Kind::failed:
    return base::trIn("download", "Failed");
  case Kind::cancelled:
    return base::trIn("download", "Cancelled");
  }
  return "";
}

DownloadRow::DownloadRow(std::shared_ptr<web::DownloadItem> item, platform::UriLauncher& launcher,
                         std::function<void()> leave)
    : item_(std::move(item)), launcher_(launcher), leave_(std::move(leave)),
      row_(glib::share(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12))) {
  build();
  subscriptions_.push_back(item_->state.observe([this] { update(); }));
  subscriptions_.push_back(item_->canBeCancelled.observe([this] { update(); }));
  // It is the last that changes with new progress.
  subscriptions_.push_back(item_->bytesWritten.observe([this] { updateProgress(); }));
  update();
}

void DownloadRow::build() {
  gtk_widget_add_css_class(row_.get(), "download");
  icon_ = gtk_image_new();
  const auto shownName = base::shortDisplayLine(item_->filename);
  auto* name = gtk_label_new(shownName.c_str());
  gtk_label_set_ellipsize(GTK_LABEL(name), PANGO_ELLIPSIZE_MIDDLE);
  gtk_label_set_single_line_mode(GTK_LABEL(name), TRUE);
  gtk_label_set_xalign(GTK_LABEL(name), 0);
  gtk_widget_set_tooltip_text(name, shownName.c_str());
  progress_ = gtk_progress_bar_new();
  setAccessibleLabel(progress_, base::tr("Progress of the download"));
  note_ = wrappedLabel(nullptr);
  gtk_widget_add_css_class(note_, "caption");
  auto* middle = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
  gtk_widget_set_hexpand(middle, TRUE);
  gtk_widget_set_valign(middle, GTK_ALIGN_CENTER);
  for (auto* widget : {name, progress_, note_})
    gtk_box_append(GTK_BOX(middle), widget);
  status_ = wrappedLabel(nullptr);
  gtk_widget_add_css_class(status_, "dim-label");
  gtk_widget_add_css_class(status_, "numeric");
  buttons_ = buttonRow();
  auto* content = sideOrBelow(sideOrBelow(middle, status_), buttons_);
  gtk_widget_set_hexpand(content, TRUE);
  for (auto* widget : {icon_, content})
    gtk_box_append(GTK_BOX(row_.get()), widget);
  // TRANSLATORS: a verb: to open a downloaded file
  open_ = addButton(gtk_button_new_with_label(base::tr("Open")), base::tr("Open"),
                    [this] { scope_.spawn(open()); });
  show_ = addButton(gtk_button_new_from_icon_name("folder-open-symbolic"), base::tr("Show in Folder"),
                    [this] { scope_.spawn(showInFolder()); });
  cancel_ = addButton(gtk_button_new_from_icon_name("process-stop-symbolic"), base::tr("Cancel Download"),
                      [this] { item_->cancel(); });
}

GtkWidget* DownloadRow::addButton(GtkWidget* button, const std::string& label, std::function<void()> act) {
  gtk_widget_add_css_class(button, "flat");
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  // Whoever clicks goes on writing in the page.
  gtk_widget_set_focus_on_click(button, FALSE);
  if (!gtk_button_get_label(GTK_BUTTON(button)))
    gtk_widget_set_tooltip_text(button, label.c_str());
  // TRANSLATORS: read aloud, as "Cancel Download: Letter.pdf"
  setAccessibleLabel(button, base::trFormat("{0}: {1}", label, base::shortDisplayLine(item_->filename)));
  clicked_.push_back(
      glib::connect<void(GtkButton*)>(button, "clicked", [act = std::move(act)](GtkButton*) { act(); }));
  gtk_box_append(GTK_BOX(buttons_), button);
  return button;
}

void DownloadRow::update() {
  const auto& state = *item_->state;
  gtk_image_set_from_icon_name(GTK_IMAGE(icon_), iconName(state.kind));
  gtk_widget_remove_css_class(icon_, "success");
  gtk_widget_remove_css_class(icon_, "error");
  if (state.kind == Kind::finished)
    gtk_widget_add_css_class(icon_, "success");
  else if (state.kind == Kind::failed)
    gtk_widget_add_css_class(icon_, "error");
  const bool finished = state.kind == Kind::finished;
  const bool running = state.kind == Kind::waiting || state.kind == Kind::downloading;
  const bool hadFocus = gtk_widget_has_focus(cancel_);
  gtk_widget_set_visible(progress_, running);
  gtk_widget_set_visible(open_, finished);
  gtk_widget_set_visible(show_, finished);
  // While the full bar is seen it stays, and keeps the keyboard for the buttons to come.
  const bool cancels = running && (*item_->canBeCancelled || item_->hasEnded());
  if (hadFocus && finished)
    gtk_widget_grab_focus(open_);
  else if (hadFocus && !cancels)
    leave_();
  gtk_widget_set_visible(cancel_, cancels);
  setNote(state.error);
  updateProgress();
}

void DownloadRow::setNote(const std::string& text) {
  gtk_label_set_text(GTK_LABEL(note_), base::shortDisplayLine(text).c_str());
  gtk_widget_set_visible(note_, !text.empty());
}

void DownloadRow::updateProgress() {
  gtk_label_set_text(GTK_LABEL(status_), downloadStatus(*item_).c_str());
  const auto fraction = *item_->fractionCompleted;
  if (item_->state->kind == Kind::downloading && *item_->totalBytes < 0 && fraction < 1)
    gtk_progress_bar_pulse(GTK_PROGRESS_BAR(progress_));
  else
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(progress_),
                                  std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0);
}

async::Task<void> DownloadRow::open() {
  const auto opened = co_await launcher_.openFile(item_->destination);
  setNote(opened ? "" : opened.error());
}

async::Task<void> DownloadRow::showInFolder() {
  const auto shown = co_await launcher_.showFile(item_->destination);
  setNote(shown ? "" : shown.error());
}

} // namespace ondrel::ui
