#include "ui/attachments/CategoryFilter.h"

#include "base/Translation.h"
#include "ui/attachments/AttachmentTexts.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

constexpr int spacing = 9;

GtkWidget* entryContent(const char* icon, const char* title) {
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
  gtk_box_append(GTK_BOX(box), gtk_image_new_from_icon_name(icon));
  gtk_box_append(GTK_BOX(box), gtk_label_new(title));
  return box;
}

} // namespace

CategoryFilter::CategoryFilter(attachments::FilesViewModel& files)
    : files_(files), button_(gtk_menu_button_new()),
      filterChanged_(files.filterChanged.subscribe([this] { update(); })) {
  gtk_widget_set_name(button_, "filter-attachments");
  gtk_menu_button_set_icon_name(GTK_MENU_BUTTON(button_), "view-sort-descending-symbolic");
  gtk_menu_button_set_popover(GTK_MENU_BUTTON(button_), makeMenu());
  gtk_widget_set_tooltip_text(button_, base::tr("Filter by file type"));
  update();
}

GtkWidget* CategoryFilter::makeMenu() {
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_add_css_class(box, "attachment-kinds");
  auto* all = gtk_button_new();
  gtk_widget_set_name(all, "all-files");
  gtk_widget_add_css_class(all, "flat");
  gtk_button_set_child(GTK_BUTTON(all), entryContent("folder-documents-symbolic", base::tr("All Files")));
  setAccessibleLabel(all, base::tr("All Files"));
  connections_.push_back(
      glib::connect<void(GtkButton*)>(all, "clicked", [this](GtkButton*) { files_.clearCategories(); }));
  gtk_box_append(GTK_BOX(box), all);
  gtk_box_append(GTK_BOX(box), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
  for (const auto& [category, title, icon] : categoryFaces) {
    auto* check = gtk_check_button_new();
    gtk_check_button_set_child(GTK_CHECK_BUTTON(check), entryContent(icon, base::tr(title)));
    setAccessibleLabel(check, base::tr(title));
    connections_.push_back(
        glib::connect<void(GtkCheckButton*)>(check, "toggled", [this, category](GtkCheckButton*) {
          if (!isUpdating_)
            files_.toggleCategory(category);
        }));
    gtk_box_append(GTK_BOX(box), check);
    checks_.push_back(check);
  }
  auto* popover = gtk_popover_new();
  gtk_popover_set_child(GTK_POPOVER(popover), box);
  return popover;
}

void CategoryFilter::update() {
  const auto& selected = files_.selectedCategories();
  isUpdating_ = true;
  for (std::size_t i = 0; i < checks_.size(); ++i)
    gtk_check_button_set_active(GTK_CHECK_BUTTON(checks_[i]),
                                selected.contains(categoryFaces[i].category) ? TRUE : FALSE);
  isUpdating_ = false;
  // TRANSLATORS: a noun: which kinds of files are shown
  setAccessibleLabel(button_, selected.empty() ? base::tr("Filter") : base::tr("Filter, active"));
  if (selected.empty())
    gtk_widget_remove_css_class(button_, "filter-active");
  else
    gtk_widget_add_css_class(button_, "filter-active");
}

} // namespace ondrel::ui
