#pragma once

#include "platform/linux/glib/Connection.h"
#include "web/page/PageNotice.h"

#include <adwaita.h>

#include <string>

namespace ondrel::ui {

// Shows what a page's user is told in passing, over the lower edge of a child. The last notice is the one
// that shows.
class PageNotices {
 public:
  explicit PageNotices(GtkWidget* child);

  GtkWidget* widget() const { return overlay_.get(); }
  void show(const web::PageNotice& notice);

 private:
  glib::Ref<GtkWidget> overlay_;
  glib::Ref<AdwToast> toast_; // that shows
  std::string text_;          // of it
  glib::Connection clicked_;
  glib::Connection dismissed_;
};

} // namespace ondrel::ui
