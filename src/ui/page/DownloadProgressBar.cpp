#include "ui/page/DownloadProgressBar.h"

#include "ui/widgets/Widgets.h"
#include "web/page/DownloadItem.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

constexpr int greatestHeight = 168; // pixels; the page must stay in sight

} // namespace

DownloadProgressBar::DownloadProgressBar()
    : bar_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))),
      list_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)) {
  gtk_widget_set_name(bar_.get(), "downloads");
  gtk_widget_add_css_class(bar_.get(), "downloads");
  gtk_widget_set_visible(bar_.get(), FALSE);
  setAccessibleLabel(list_, "Downloads");
  auto* scrolled = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scrolled), TRUE);
  gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scrolled), greatestHeight);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), list_);
  gtk_box_append(GTK_BOX(bar_.get()), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
  gtk_box_append(GTK_BOX(bar_.get()), scrolled);
}

void DownloadProgressBar::setDownloads(const std::vector<std::shared_ptr<web::DownloadItem>>& downloads) {
  std::erase_if(rows_, [&](const auto& row) {
    const bool gone = std::ranges::find(downloads, row->item()) == downloads.end();
    if (gone)
      gtk_box_remove(GTK_BOX(list_), row->widget());
    return gone;
  });
  for (const auto& item : downloads) {
    if (std::ranges::find(rows_, item, &DownloadRow::item) != rows_.end())
      continue;
    rows_.push_back(std::make_unique<DownloadRow>(item));
    gtk_box_append(GTK_BOX(list_), rows_.back()->widget());
  }
  gtk_widget_set_visible(bar_.get(), !rows_.empty());
}

} // namespace ondrel::ui
