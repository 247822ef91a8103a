#include "ui/ImportProgressWindow.h"

#include "highlights/HighlightTransfer.h"
#include "ui/Widgets.h"

#include <adwaita.h>
#include <fmt/format.h>

#include <chrono>

namespace ondrel::ui {

namespace {

using Step = highlights::HighlightTransfer::Progress::Step;

// What is done sooner needs no window.
constexpr std::chrono::milliseconds patience{500};
constexpr int width = 380;
constexpr int margin = 24;

} // namespace

ImportProgressWindow::ImportProgressWindow(highlights::HighlightTransfer& transfer,
                                           std::function<GtkWindow*()> parent)
    : transfer_(transfer), parent_(std::move(parent)),
      subscription_(transfer.importProgress().observe([this] { follow(); })) {
}

ImportProgressWindow::~ImportProgressWindow() {
  close();
}

void ImportProgressWindow::follow() {
  if (!transfer_.importProgress().get()) {
    close();
  } else if (window_) {
    update();
  } else if (!isWaiting_) {
    isWaiting_ = true;
    delay_ = async::Timer(patience, [this] { open(); });
  }
}

void ImportProgressWindow::open() {
  isWaiting_ = false;
  window_ = glib::share(GTK_WINDOW(adw_window_new()));
  gtk_widget_set_name(GTK_WIDGET(window_.get()), "import-progress");
  gtk_window_set_title(window_.get(), "Importing Highlights");
  gtk_window_set_resizable(window_.get(), FALSE);
  gtk_window_set_default_size(window_.get(), width, -1);
  // Not modal: mail can be read meanwhile.
  gtk_window_set_transient_for(window_.get(), parent_());

  bar_ = GTK_PROGRESS_BAR(gtk_progress_bar_new());
  setAccessibleLabel(GTK_WIDGET(bar_), "Imported Highlights");
  label_ = GTK_LABEL(gtk_label_new(nullptr));
  gtk_widget_add_css_class(GTK_WIDGET(label_), "dim-label");
  gtk_widget_add_css_class(GTK_WIDGET(label_), "numeric");
  stop_ = gtk_button_new_with_label("Stop");
  gtk_widget_add_css_class(stop_, "pill");
  gtk_widget_set_halign(stop_, GTK_ALIGN_CENTER);
  gtk_widget_set_margin_top(stop_, margin / 2);
  connections_.push_back(
      glib::connect<void(GtkButton*)>(stop_, "clicked", [this](GtkButton*) { transfer_.stopImport(); }));
  connections_.push_back(
      glib::connect<gboolean(GtkWindow*)>(window_.get(), "close-request", [this](GtkWindow*) -> gboolean {
        transfer_.stopImport();
        return TRUE; // it goes with the import
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

void ImportProgressWindow::update() {
  const auto& [step, done, total] = *transfer_.importProgress().get();
  if (step == Step::reading) {
    gtk_progress_bar_pulse(bar_);
    gtk_label_set_text(label_, "Reading the file…");
    return;
  }
  if (total > 0)
    gtk_progress_bar_set_fraction(bar_, static_cast<double>(done) / static_cast<double>(total));
  const auto* format = step == Step::adding ? "{} of {}" : "Labelling conversations: {} of {}";
  gtk_label_set_text(label_, fmt::format(fmt::runtime(format), done, total).c_str());
}

void ImportProgressWindow::close() {
  delay_.stop();
  isWaiting_ = false;
  connections_.clear();
  if (window_)
    gtk_window_destroy(window_.get());
  window_ = nullptr;
}

} // namespace ondrel::ui
