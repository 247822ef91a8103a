#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace ondrel::web {
class PageSearch;
}

namespace ondrel::ui {

// The bar above a page in which its user looks for text.
class FindBar {
 public:
  // The search outlives it. `closed` is called when the bar goes while it has the keyboard.
  FindBar(web::PageSearch& search, std::function<void()> closed);
  FindBar(const FindBar&) = delete;
  FindBar& operator=(const FindBar&) = delete;

  GtkWidget* widget() const { return bar_.get(); }

 private:
  GtkWidget* button(const char* name, const char* icon, const char* label, const char* keys,
                    void (web::PageSearch::*step)());
  void connectEntry();
  void addKeys();
  void on(gpointer object, const char* signal, std::function<void()> handler);
  void takeKeyboard();
  void update();
  void tell(const char* text, bool isError);

  web::PageSearch& search_;
  const std::function<void()> closed_;
  glib::Ref<GtkWidget> bar_;
  GtkWidget* entry_;
  GtkWidget* count_;
  GtkWidget* previous_ = nullptr;
  GtkWidget* next_ = nullptr;
  bool isUpdating_ = false;
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
