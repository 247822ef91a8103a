#include "ui/LoadProblemBar.h"

#include "ui/ShownText.h"

namespace ondrel::ui {

namespace {

GtkWidget* wrappedLabel(const char* text) {
  auto* label = gtk_label_new(text);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  return label;
}

} // namespace

LoadProblemBar::LoadProblemBar(std::function<void()> tryNow)
    : revealer_(glib::share(gtk_revealer_new())), description_(wrappedLabel(nullptr)) {
  gtk_widget_set_name(revealer_.get(), "load-problem");
  auto* title = wrappedLabel("Can't reach the mail service");
  gtk_widget_add_css_class(title, "heading");
  auto* trying = wrappedLabel("Trying again…");
  gtk_widget_add_css_class(trying, "dim-label");
  gtk_label_set_lines(GTK_LABEL(description_), 3);
  gtk_label_set_ellipsize(GTK_LABEL(description_), PANGO_ELLIPSIZE_END);
  auto* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  gtk_widget_set_hexpand(texts, TRUE);
  for (auto* label : {title, description_, trying})
    gtk_box_append(GTK_BOX(texts), label);

  auto* button = gtk_button_new_with_label("Try Now");
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  clicked_ = glib::connect<void(GtkButton*)>(button, "clicked",
                                             [tryNow = std::move(tryNow)](GtkButton*) { tryNow(); });

  auto* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  gtk_widget_add_css_class(row, "load-problem");
  gtk_box_append(GTK_BOX(row), gtk_image_new_from_icon_name("network-offline-symbolic"));
  gtk_box_append(GTK_BOX(row), texts);
  gtk_box_append(GTK_BOX(row), button);
  auto* bar = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(bar), row);
  gtk_box_append(GTK_BOX(bar), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
  gtk_revealer_set_child(GTK_REVEALER(revealer_.get()), bar);
}

void LoadProblemBar::show(const std::string& description) {
  gtk_label_set_text(GTK_LABEL(description_), shownLine(description).c_str());
  gtk_widget_set_visible(description_, !description.empty());
  gtk_revealer_set_reveal_child(GTK_REVEALER(revealer_.get()), TRUE);
}

void LoadProblemBar::hide() {
  gtk_revealer_set_reveal_child(GTK_REVEALER(revealer_.get()), FALSE);
}

} // namespace ondrel::ui
