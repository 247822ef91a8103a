#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <memory>
#include <vector>

namespace ondrel::web {
struct PageDialog;
}

namespace ondrel::ui {

// Shows a dialog of a page as a card over that page, which is dimmed and out of reach. The rest of the
// window, other tabs too, stays as it is.
class PageDialogView {
 public:
  explicit PageDialogView(std::shared_ptr<const web::PageDialog> dialog);
  PageDialogView(const PageDialogView&) = delete;
  PageDialogView& operator=(const PageDialogView&) = delete;

  // To be laid over the page.
  GtkWidget* widget() const { return shade_.get(); }
  // What has the keyboard first.
  GtkWidget* firstFocus() const;

 private:
  GtkWidget* card();
  GtkWidget* buttons();
  void answer(std::size_t button);

  const std::shared_ptr<const web::PageDialog> dialog_;
  glib::Ref<GtkWidget> shade_;
  GtkWidget* field_ = nullptr;   // none but for a prompt
  GtkWidget* silence_ = nullptr; // where that is offered
  GtkWidget* default_ = nullptr;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
