#include "ui/page/CrashedPage.h"

#include "base/Translation.h"

#include <adwaita.h>

namespace ondrel::ui {

CrashedPage::CrashedPage(std::function<void()> reload)
    : page_(glib::share(adw_status_page_new())), button_(gtk_button_new_with_label(base::tr("Reload"))) {
  gtk_widget_set_name(page_.get(), "page-stopped");
  auto* page = ADW_STATUS_PAGE(page_.get());
  adw_status_page_set_icon_name(page, "dialog-warning-symbolic");
  adw_status_page_set_title(page, base::tr("This Page Stopped Working"));
  adw_status_page_set_description(page,
                                  base::tr("Reload it to go on. Text that was not saved yet may be lost."));
  gtk_widget_set_halign(button_, GTK_ALIGN_CENTER);
  gtk_widget_add_css_class(button_, "pill");
  gtk_widget_add_css_class(button_, "suggested-action");
  clicked_ = glib::connect<void(GtkButton*)>(button_, "clicked",
                                             [reload = std::move(reload)](GtkButton*) { reload(); });
  adw_status_page_set_child(page, button_);
}

} // namespace ondrel::ui
