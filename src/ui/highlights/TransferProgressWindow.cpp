#include "ui/highlights/TransferProgressWindow.h"

#include "base/Translation.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <chrono>

namespace ondrel::ui {

namespace {

using Step = TransferProgressWindow::Progress::Step;

// What is done sooner needs no window.
constexpr std::chrono::milliseconds patience{500};
constexpr std::chrono::milliseconds pulseInterval{120};
constexpr int width = 340;
constexpr int margin = 24;

// How far it is can't be told before there is something to count.
bool isCounted(const TransferProgressWindow::Progress& progress) {
  return progress.step != Step::reading && progress.total > 0 &&
         (progress.step != Step::asking || progress.done > 0);
}

std::string textFor(const TransferProgressWindow::Progress& progress) {
  const auto [step, done, total] = progress;
  switch (step) {
  case Step::asking:
    return isCounted(progress) ? base::trFormat("Looking up messages: {0} of {1}", done, total)
                               : base::tr("Asking the server…");
  case Step::reading:
    return base::tr("Reading the file…");
  case Step::adding:
    return base::trFormat("{0} of {1}", done, total);
  case Step::labelling:
    return base::trFormat("Labelling conversations: {0} of {1}", done, total);
  }
  return {};
}

} // namespace

TransferProgressWindow::TransferProgressWindow(Work work, std::function<GtkWindow*()> parent)
    : work_(std::move(work)), parent_(std::move(parent)),
      subscription_(work_.progress.observe([this] { follow(); })) {
}

TransferProgressWindow::~TransferProgressWindow() {
  close();
}

void TransferProgressWindow::follow() {
  if (!work_.progress.get()) {
    close();
  } else if (window_) {
    update();
  } else if (!isWaiting_) {
    isWaiting_ = true;
    delay_ = async::Timer(patience, [this] { open(); });
  }
}

void TransferProgressWindow::open() {
  isWaiting_ = false;
  window_ = glib::share(GTK_WINDOW(adw_window_new()));
  gtk_widget_set_name(GTK_WIDGET(window_.get()), "transfer-progress");
  gtk_window_set_title(window_.get(), work_.title);
  gtk_window_set_resizable(window_.get(), FALSE);
  gtk_window_set_default_size(window_.get(), width, -1);
  // Not modal: mail can be read meanwhile.
  gtk_window_set_transient_for(window_.get(), parent_());

  bar_ = GTK_PROGRESS_BAR(gtk_progress_bar_new());
  setAccessibleLabel(GTK_WIDGET(bar_), work_.title);
  label_ = GTK_LABEL(wrappedLabel(nullptr));
  gtk_widget_add_css_class(GTK_WIDGET(label_), "dim-label");
  gtk_widget_add_css_class(GTK_WIDGET(label_), "numeric");
  stop_ = gtk_button_new_with_label(base::tr("Stop"));
  gtk_widget_add_css_class(stop_, "pill");
  gtk_widget_set_halign(stop_, GTK_ALIGN_CENTER);
  gtk_widget_set_margin_top(stop_, margin / 2);
  connections_.push_back(
      glib::connect<void(GtkButton*)>(stop_, "clicked", [this](GtkButton*) { work_.stop(); }));
  connections_.push_back(
      glib::connect<gboolean(GtkWindow*)>(window_.get(), "close-request", [this](GtkWindow*) -> gboolean {
        work_.stop();
        return TRUE; // it goes with the work
      }));

  auto* bars = adw_header_bar_new();
  adw_header_bar_set_show_start_title_buttons(ADW_HEADER_BAR(bars), FALSE);
  adw_header_bar_set_show_end_title_buttons(ADW_HEADER_BAR(bars), FALSE);
  gtk_widget_add_css_class(bars, "flat");
  auto* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, margin / 2);
  gtk_widget_set_margin_start(content, margin);
  gtk_widget_set_margin_end(content, margin);
  gtk_widget_set_margin_top(content, margin / 2);
  gtk_widget_set_margin_bottom(content, margin);
  for (auto* widget : {GTK_WIDGET(bar_), GTK_WIDGET(label_), stop_})
    gtk_box_append(GTK_BOX(content), widget);
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(box), bars);
  gtk_box_append(GTK_BOX(box), content);
  adw_window_set_content(ADW_WINDOW(window_.get()), box);
  update();
  gtk_window_present(window_.get());
}

void TransferProgressWindow::update() {
  const auto& progress = *work_.progress.get();
  gtk_label_set_text(label_, textFor(progress).c_str());
  if (isCounted(progress)) {
    pulse_.stop();
    gtk_progress_bar_set_fraction(bar_,
                                  static_cast<double>(progress.done) / static_cast<double>(progress.total));
  } else {
    pulse();
  }
}

// A bar that stood still would look like a program that does.
void TransferProgressWindow::pulse() {
  gtk_progress_bar_pulse(bar_);
  pulse_ = async::Timer(pulseInterval, [this] { pulse(); });
}

void TransferProgressWindow::close() {
  delay_.stop();
  pulse_.stop();
  isWaiting_ = false;
  connections_.clear();
  if (window_)
    gtk_window_destroy(window_.get());
  window_ = nullptr;
}

} // namespace ondrel::ui
