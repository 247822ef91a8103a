#include "ui/page/LoadBar.h"

#include "base/Translation.h"
#include "ui/widgets/Widgets.h"

#include <algorithm>
#include <chrono>

namespace ondrel::ui {

namespace {

constexpr double leastShown = 0.1; // a server that says nothing yet shall not look like no load
constexpr std::chrono::milliseconds endShown{300};

} // namespace

LoadBar::LoadBar() : bar_(glib::share(gtk_progress_bar_new())) {
  gtk_widget_set_name(bar_.get(), "load-progress");
  gtk_widget_add_css_class(bar_.get(), "osd");
  gtk_widget_set_valign(bar_.get(), GTK_ALIGN_START);
  gtk_widget_set_can_target(bar_.get(), FALSE);
  gtk_widget_set_visible(bar_.get(), FALSE);
  // TRANSLATORS: the progress of a page that is loading
  setAccessibleLabel(bar_.get(), base::tr("Loading"));
}

void LoadBar::show(double progress) {
  hide_.stop();
  gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(bar_.get()), std::clamp(progress, leastShown, 1.0));
  gtk_widget_set_visible(bar_.get(), TRUE);
}

void LoadBar::end() {
  if (!gtk_widget_get_visible(bar_.get()))
    return;
  gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(bar_.get()), 1);
  hide_ = async::Timer(endShown, [this] { gtk_widget_set_visible(bar_.get(), FALSE); });
}

} // namespace ondrel::ui
