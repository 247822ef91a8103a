#include "ui/page/ProblemBar.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "ui/widgets/ButtonRow.h"
#include "ui/widgets/SideOrBelow.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

ProblemBar::ProblemBar(Content content)
    : revealer_(glib::share(gtk_revealer_new())), title_(wrappedLabel(nullptr)),
      description_(wrappedLabel(nullptr)) {
  gtk_widget_set_name(revealer_.get(), content.name);
  auto* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  gtk_widget_set_hexpand(texts, TRUE);
  gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
  gtk_widget_add_css_class(title_, "heading");
  for (auto* label : {title_, description_}) {
    gtk_label_set_lines(GTK_LABEL(label), 3);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    connections_.push_back(tipWhereCut(label));
    gtk_box_append(GTK_BOX(texts), label);
  }
  if (content.note) {
    auto* note = wrappedLabel(content.note);
    gtk_widget_add_css_class(note, "dim-label");
    gtk_box_append(GTK_BOX(texts), note);
  }

  auto* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  gtk_widget_add_css_class(row, "page-problem");
  gtk_box_append(GTK_BOX(row), gtk_image_new_from_icon_name(content.icon));
  const auto add = [&](GtkWidget* place, GtkWidget* button, std::function<void()> clicked) {
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    connections_.push_back(glib::connect<void(GtkButton*)>(
        button, "clicked", [clicked = std::move(clicked)](GtkButton*) { clicked(); }));
    gtk_box_append(GTK_BOX(place), button);
  };
  auto* body = texts;
  if (!content.buttons.empty()) {
    auto* buttons = buttonRow();
    for (auto& each : content.buttons)
      add(buttons, gtk_button_new_with_label(each.label), std::move(each.clicked));
    body = sideOrBelow(texts, buttons);
    gtk_widget_set_hexpand(body, TRUE);
  }
  gtk_box_append(GTK_BOX(row), body);
  if (content.dismissed) {
    auto* close = gtk_button_new_from_icon_name("window-close-symbolic");
    gtk_widget_add_css_class(close, "flat");
    gtk_widget_set_tooltip_text(close, base::tr("Close"));
    setAccessibleLabel(close, base::tr("Close"));
    add(row, close, std::move(content.dismissed));
  }
  auto* bar = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(bar), row);
  gtk_box_append(GTK_BOX(bar), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
  gtk_revealer_set_child(GTK_REVEALER(revealer_.get()), bar);
}

void ProblemBar::show(const std::string& title, const std::string& description) {
  gtk_label_set_text(GTK_LABEL(title_), title.c_str());
  gtk_label_set_text(GTK_LABEL(description_), base::shortDisplayLine(description).c_str());
  gtk_widget_set_visible(description_, !description.empty());
  gtk_revealer_set_reveal_child(GTK_REVEALER(revealer_.get()), TRUE);
}

void ProblemBar::hide() {
  gtk_revealer_set_reveal_child(GTK_REVEALER(revealer_.get()), FALSE);
}

} // namespace ondrel::ui
