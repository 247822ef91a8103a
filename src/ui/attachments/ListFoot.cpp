#include "ui/attachments/ListFoot.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

constexpr int spacing = 12;

GtkWidget* centeredText(const char* text) {
  auto* label = wrappedLabel(text);
  gtk_label_set_justify(GTK_LABEL(label), GTK_JUSTIFY_CENTER);
  gtk_label_set_xalign(GTK_LABEL(label), 0.5F);
  return label;
}

} // namespace

ListFoot::ListFoot(const attachments::FilesViewModel& files, std::function<void()> loadMore)
    : files_(files), box_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing))),
      hint_(centeredText(base::tr("No matches in the loaded attachments yet."))), spinner_(gtk_spinner_new()),
      more_(gtk_button_new_with_label(base::tr("Load More"))), error_(centeredText(nullptr)) {
  gtk_widget_set_name(box_.get(), "attachments-foot");
  gtk_widget_add_css_class(box_.get(), "attachments-foot");
  gtk_widget_set_name(more_, "load-more");
  gtk_widget_set_halign(more_, GTK_ALIGN_CENTER);
  gtk_widget_add_css_class(hint_, "dim-label");
  gtk_widget_add_css_class(error_, "caption");
  gtk_widget_add_css_class(error_, "error");
  gtk_label_set_selectable(GTK_LABEL(error_), TRUE);
  setAccessibleLabel(spinner_, base::tr("Loading Attachments"));
  for (auto* widget : {hint_, spinner_, more_, error_})
    gtk_box_append(GTK_BOX(box_.get()), widget);
  clicked_ = glib::connect<void(GtkButton*)>(more_, "clicked",
                                             [loadMore = std::move(loadMore)](GtkButton*) { loadMore(); });
  update();
}

void ListFoot::update() {
  const bool isLoading = *files_.isLoading;
  const bool hasMore = !isLoading && !*files_.hasLoadedAll;
  gtk_widget_set_visible(hint_, hasMore && files_.isFiltered() && files_.rowCount() == 0);
  gtk_widget_set_visible(spinner_, isLoading);
  gtk_spinner_set_spinning(GTK_SPINNER(spinner_), isLoading);
  gtk_widget_set_visible(more_, hasMore);
  const auto& error = *files_.errorMessage;
  gtk_widget_set_visible(error_, error.has_value());
  gtk_label_set_text(GTK_LABEL(error_), error ? base::shortDisplayLine(*error).c_str() : "");
}

} // namespace ondrel::ui
