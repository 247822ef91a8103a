#include "ui/page/PageDialogView.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "ui/widgets/ButtonRow.h"
#include "ui/widgets/Widgets.h"
#include "web/page/PageDialogs.h"

#include <adwaita.h>

namespace ondrel::ui {

namespace {

constexpr int cardWidth = 420; // at most
constexpr int textHeight = 240;
constexpr int spacing = 12;

GtkWidget* scrolled(GtkWidget* text) {
  auto* scroller = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scroller), textHeight);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), text);
  return scroller;
}

} // namespace

PageDialogView::PageDialogView(std::shared_ptr<const web::PageDialog> dialog)
    : dialog_(std::move(dialog)), shade_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))) {
  gtk_widget_set_name(shade_.get(), "page-dialog");
  gtk_widget_add_css_class(shade_.get(), "page-dialog-shade");
  auto* clamp = adw_clamp_new();
  adw_clamp_set_maximum_size(ADW_CLAMP(clamp), cardWidth);
  adw_clamp_set_tightening_threshold(ADW_CLAMP(clamp), cardWidth);
  adw_clamp_set_child(ADW_CLAMP(clamp), card());
  gtk_widget_set_vexpand(clamp, TRUE);
  gtk_box_append(GTK_BOX(shade_.get()), clamp);

  auto* keys = gtk_event_controller_key_new();
  using Pressed = gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType);
  connections_.push_back(glib::connect<Pressed>(
      keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
        if (key != GDK_KEY_Escape)
          return FALSE;
        answer(dialog_->escapeButton);
        return TRUE;
      }));
  gtk_widget_add_controller(shade_.get(), keys);
}

GtkWidget* PageDialogView::card() {
  auto* card =
      GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "orientation", GTK_ORIENTATION_VERTICAL, "spacing", spacing,
                              "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT_DIALOG, nullptr));
  const auto heading = base::shortDisplayLine(dialog_->heading);
  gtk_accessible_update_property(GTK_ACCESSIBLE(card), GTK_ACCESSIBLE_PROPERTY_LABEL, heading.c_str(),
                                 GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, dialog_->text.c_str(),
                                 GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);
  gtk_widget_add_css_class(card, "page-dialog-card");
  gtk_widget_set_valign(card, GTK_ALIGN_CENTER);
  auto* title = wrappedLabel(heading.c_str());
  gtk_widget_add_css_class(title, "heading");
  gtk_box_append(GTK_BOX(card), title);
  if (!dialog_->text.empty())
    gtk_box_append(GTK_BOX(card), scrolled(wrappedLabel(dialog_->text.c_str())));
  if (dialog_->field) {
    field_ = gtk_entry_new();
    gtk_editable_set_text(GTK_EDITABLE(field_), dialog_->field->c_str());
    connections_.push_back(
        glib::connect<void(GtkEntry*)>(field_, "activate", [this](GtkEntry*) { answer(0); }));
    gtk_box_append(GTK_BOX(card), field_);
  }
  if (dialog_->offersSilence) {
    silence_ = gtk_check_button_new_with_label(base::tr("Don't let this page ask again"));
    gtk_widget_set_name(silence_, "silence");
    gtk_box_append(GTK_BOX(card), silence_);
  }
  gtk_box_append(GTK_BOX(card), buttons());
  return card;
}

// In the desktop's order: the one that agrees stands at the end.
GtkWidget* PageDialogView::buttons() {
  auto* row = buttonRow();
  const auto add = [&](std::size_t i) {
    auto* button = gtk_button_new_with_label(dialog_->buttons[i].c_str());
    connections_.push_back(
        glib::connect<void(GtkButton*)>(button, "clicked", [this, i](GtkButton*) { answer(i); }));
    gtk_box_append(GTK_BOX(row), button);
    if (i == 0)
      default_ = button;
    if (i != dialog_->escapeButton)
      gtk_widget_add_css_class(button, i == 0 ? "suggested-action" : "destructive-action");
  };
  add(dialog_->escapeButton);
  for (auto i = dialog_->buttons.size(); i-- > 0;)
    if (i != dialog_->escapeButton)
      add(i);
  return row;
}

GtkWidget* PageDialogView::firstFocus() const {
  return field_ ? field_ : default_;
}

// The answer takes this view away.
void PageDialogView::answer(std::size_t button) {
  web::PageDialogAnswer given;
  given.button = button;
  if (field_)
    given.text = gtk_editable_get_text(GTK_EDITABLE(field_));
  if (silence_)
    given.silence = gtk_check_button_get_active(GTK_CHECK_BUTTON(silence_)) != FALSE;
  const auto dialog = dialog_;
  dialog->answer(given);
}

} // namespace ondrel::ui
