#include "ui/page/DownloadRow.h"

#include "base/Text.h"
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
    return "Waiting";
  case Kind::downloading:
    // Not every server tells how much there is.
    return *item.totalBytes < 0 ? size(*item.bytesWritten)
                                : size(*item.bytesWritten) + " / " + size(*item.totalBytes);
  case Kind::finished:
    return "Done";
  case Kind::failed:
    return "Failed";
  case Kind::cancelled:
    return "Cancelled";
  }
  return "";
}

DownloadRow::DownloadRow(std::shared_ptr<web::DownloadItem> item)
    : item_(std::move(item)), row_(glib::share(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12))) {
  build();
  subscriptions_.push_back(item_->state.observe([this] { update(); }));
  subscriptions_.push_back(item_->bytesWritten.observe([this] { updateProgress(); }));
  subscriptions_.push_back(item_->totalBytes.observe([this] { updateProgress(); }));
  subscriptions_.push_back(item_->fractionCompleted.observe([this] { updateProgress(); }));
  update();
}

void DownloadRow::build() {
  gtk_widget_add_css_class(row_.get(), "download");
  icon_ = gtk_image_new();
  auto* name = gtk_label_new(base::shortDisplayLine(item_->filename).c_str());
  gtk_label_set_ellipsize(GTK_LABEL(name), PANGO_ELLIPSIZE_MIDDLE);
  gtk_label_set_single_line_mode(GTK_LABEL(name), TRUE);
  gtk_label_set_xalign(GTK_LABEL(name), 0);
  progress_ = gtk_progress_bar_new();
  setAccessibleLabel(progress_, "Progress of the download");
  auto* middle = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
  gtk_widget_set_hexpand(middle, TRUE);
  gtk_widget_set_valign(middle, GTK_ALIGN_CENTER);
  gtk_box_append(GTK_BOX(middle), name);
  gtk_box_append(GTK_BOX(middle), progress_);
  status_ = gtk_label_new(nullptr);
  gtk_widget_add_css_class(status_, "dim-label");
  gtk_widget_add_css_class(status_, "numeric");
  for (auto* widget : {icon_, middle, status_})
    gtk_box_append(GTK_BOX(row_.get()), widget);
}

void DownloadRow::update() {
  const auto& state = *item_->state;
  gtk_image_set_from_icon_name(GTK_IMAGE(icon_), iconName(state.kind));
  gtk_widget_remove_css_class(icon_, "success");
  gtk_widget_remove_css_class(icon_, "error");
  if (state.kind != Kind::downloading)
    gtk_widget_add_css_class(icon_, state.kind == Kind::finished ? "success" : "error");
  gtk_widget_set_visible(progress_, state.kind == Kind::downloading);
  gtk_widget_set_tooltip_text(row_.get(),
                              state.error.empty() ? nullptr : base::shortDisplayLine(state.error).c_str());
  updateProgress();
}

void DownloadRow::updateProgress() {
  gtk_label_set_text(GTK_LABEL(status_), downloadStatus(*item_).c_str());
  const auto fraction = *item_->fractionCompleted;
  if (*item_->totalBytes < 0 && fraction < 1)
    gtk_progress_bar_pulse(GTK_PROGRESS_BAR(progress_));
  else
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(progress_),
                                  std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0);
}

} // namespace ondrel::ui
