#include "ui/attachments/AttachmentRow.h"

#include "base/Translation.h"
#include "ui/attachments/AttachmentTexts.h"
#include "ui/widgets/SideOrBelow.h"
#include "ui/widgets/Texture.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <utility>

namespace ondrel::ui {

namespace {

constexpr int spacing = 10;
constexpr int thumbnailSide = 48; // pixels
constexpr int buttonSide = 24;
constexpr int spinnerSide = 20;

// From screen readers, too.
void setHidden(GtkWidget* row, bool isHidden) {
  gtk_accessible_update_state(GTK_ACCESSIBLE(row), GTK_ACCESSIBLE_STATE_HIDDEN, isHidden, -1);
}

// One line that takes what room there is.
GtkInscription* line(GtkInscriptionOverflow overflow, std::initializer_list<const char*> classes) {
  auto* result = GTK_INSCRIPTION(gtk_inscription_new(nullptr));
  gtk_inscription_set_text_overflow(result, overflow);
  gtk_inscription_set_min_chars(result, 0);
  for (const auto* each : classes)
    gtk_widget_add_css_class(GTK_WIDGET(result), each);
  return result;
}

// Below each other in line, however long they are.
GtkInscription* endLine(int characters) {
  auto* result = line(GTK_INSCRIPTION_OVERFLOW_CLIP, {"attachment-end", "dim-label", "numeric"});
  gtk_inscription_set_xalign(result, 1);
  gtk_inscription_set_min_chars(result, static_cast<guint>(characters));
  gtk_inscription_set_nat_chars(result, static_cast<guint>(characters));
  return result;
}

GtkWidget* makeRow() {
  return GTK_WIDGET(g_object_new(ADW_TYPE_BIN, "css-name", "row", "accessible-role",
                                 GTK_ACCESSIBLE_ROLE_LIST_ITEM, "focusable", TRUE, nullptr));
}

} // namespace

AttachmentRow::AttachmentRow(int dateCharacters, ShowMenu showMenu) : row_(glib::share(makeRow())) {
  gtk_widget_add_css_class(row_.get(), "activatable");
  gtk_widget_set_tooltip_text(row_.get(), base::tr("Show preview"));
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
  auto* texts = sideOrBelow(makeTexts(), makeEnd(dateCharacters));
  gtk_widget_set_hexpand(texts, TRUE);
  for (auto* part : {makeThumbnail(), texts})
    gtk_box_append(GTK_BOX(box), part);
  more_ = gtk_button_new_from_icon_name("view-more-symbolic");
  gtk_widget_set_size_request(more_, buttonSide, buttonSide);
  gtk_widget_set_valign(more_, GTK_ALIGN_CENTER);
  gtk_widget_set_tooltip_text(more_, base::tr("More actions"));
  setAccessibleLabel(more_, base::tr("More actions"));
  for (const auto* each : {"flat", "circular", "attachment-more"})
    gtk_widget_add_css_class(more_, each);
  clicked_ = glib::connect<void(GtkButton*)>(more_, "clicked",
                                             [showMenu = std::move(showMenu)](GtkButton*) { showMenu(); });
  gtk_box_append(GTK_BOX(box), more_);
  adw_bin_set_child(ADW_BIN(row_.get()), box);
  setHidden(row_.get(), true); // until it has a file
}

GtkWidget* AttachmentRow::makeThumbnail() {
  symbol_ = GTK_IMAGE(gtk_image_new());
  gtk_widget_set_size_request(GTK_WIDGET(symbol_), thumbnailSide, thumbnailSide);
  gtk_widget_add_css_class(GTK_WIDGET(symbol_), "dim-label");
  gtk_widget_add_css_class(GTK_WIDGET(symbol_), "attachment-symbol");
  picture_ = GTK_PICTURE(gtk_picture_new());
  // Above the symbol, whose size it takes: a picture of any shape moves nothing.
  auto* overlay = gtk_overlay_new();
  gtk_widget_add_css_class(overlay, "attachment-thumbnail");
  gtk_widget_set_overflow(overlay, GTK_OVERFLOW_HIDDEN);
  gtk_widget_set_valign(overlay, GTK_ALIGN_CENTER);
  gtk_overlay_set_child(GTK_OVERLAY(overlay), GTK_WIDGET(symbol_));
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay), GTK_WIDGET(picture_));
  return overlay;
}

GtkWidget* AttachmentRow::makeTexts() {
  name_ = line(GTK_INSCRIPTION_OVERFLOW_ELLIPSIZE_MIDDLE, {});
  message_ = line(GTK_INSCRIPTION_OVERFLOW_ELLIPSIZE_END, {"caption", "dim-label"});
  auto* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  gtk_widget_set_valign(column, GTK_ALIGN_CENTER);
  gtk_widget_set_hexpand(column, TRUE);
  gtk_box_append(GTK_BOX(column), GTK_WIDGET(name_));
  gtk_box_append(GTK_BOX(column), GTK_WIDGET(message_));
  return column;
}

GtkWidget* AttachmentRow::makeEnd(int characters) {
  date_ = endLine(characters);
  size_ = endLine(characters);
  auto* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  gtk_widget_set_valign(column, GTK_ALIGN_CENTER);
  gtk_box_append(GTK_BOX(column), GTK_WIDGET(date_));
  gtk_box_append(GTK_BOX(column), GTK_WIDGET(size_));
  return column;
}

void AttachmentRow::show(const AttachmentTexts& texts, attachments::AttachmentCategory category) {
  category_ = category;
  gtk_inscription_set_text(name_, texts.name.c_str());
  gtk_inscription_set_text(message_, texts.message.c_str());
  gtk_inscription_set_text(date_, texts.date.c_str());
  gtk_inscription_set_text(size_, texts.size.c_str());
  setAccessibleLabel(row_.get(), texts.spoken());
  setHidden(row_.get(), false);
}

void AttachmentRow::setThumbnail(const platform::PicturePointer& thumbnail) {
  const bool hasPixels = thumbnail && thumbnail->width > 0 && thumbnail->height > 0;
  const auto texture = hasPixels ? textureOf(thumbnail) : nullptr;
  // All of a page that is higher than wide would be too small to tell anything.
  const bool isPhoto = category_ == attachments::AttachmentCategory::image;
  gtk_picture_set_content_fit(picture_, isPhoto ? GTK_CONTENT_FIT_COVER : GTK_CONTENT_FIT_CONTAIN);
  gtk_picture_set_paintable(picture_, GDK_PAINTABLE(texture.get()));
  showSymbol(texture ? nullptr : categoryIcon(category_));
}

// Looking for a symbol in the theme takes time.
void AttachmentRow::showSymbol(const char* icon) {
  if (std::exchange(shownSymbol_, icon) == icon)
    return;
  if (icon)
    gtk_image_set_from_icon_name(symbol_, icon);
  else
    gtk_image_clear(symbol_);
}

void AttachmentRow::setSelected(bool isSelected) {
  if (isSelected)
    gtk_widget_set_state_flags(row_.get(), GTK_STATE_FLAG_SELECTED, FALSE);
  else
    gtk_widget_unset_state_flags(row_.get(), GTK_STATE_FLAG_SELECTED);
  gtk_accessible_update_state(GTK_ACCESSIBLE(row_.get()), GTK_ACCESSIBLE_STATE_SELECTED, isSelected, -1);
}

void AttachmentRow::setBusy(bool isBusy) {
  if (isBusy == (spinner_ != nullptr))
    return;
  auto* box = gtk_widget_get_parent(more_);
  gtk_widget_set_visible(more_, !isBusy);
  if (!isBusy) {
    gtk_box_remove(GTK_BOX(box), std::exchange(spinner_, nullptr));
    return;
  }
  spinner_ = gtk_spinner_new();
  gtk_widget_set_size_request(spinner_, spinnerSide, spinnerSide);
  gtk_widget_set_valign(spinner_, GTK_ALIGN_CENTER);
  gtk_widget_set_margin_start(spinner_, (buttonSide - spinnerSide) / 2);
  gtk_widget_set_margin_end(spinner_, (buttonSide - spinnerSide) / 2);
  // TRANSLATORS: something is being done with this file
  setAccessibleLabel(spinner_, base::tr("Working"));
  gtk_spinner_start(GTK_SPINNER(spinner_));
  gtk_box_append(GTK_BOX(box), spinner_);
}

} // namespace ondrel::ui
