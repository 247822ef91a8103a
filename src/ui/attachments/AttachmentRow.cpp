#include "ui/attachments/AttachmentRow.h"

#include "platform/documents/Picture.h"
#include "ui/attachments/AttachmentTexts.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

namespace ondrel::ui {

namespace {

constexpr int spacing = 10;
constexpr int thumbnailSide = 48; // pixels
constexpr int buttonSide = 24;
constexpr int spinnerSide = 20;
constexpr int dateCharacters = 12; // of most locales: dates stand in line below each other

// The pixels stay the picture's.
glib::Ref<GdkPaintable> paintable(const platform::PicturePointer& picture) {
  auto* owner = new platform::PicturePointer(picture);
  auto* bytes = g_bytes_new_with_free_func(
      picture->pixels.data(), picture->pixels.size(),
      [](gpointer data) { delete static_cast<platform::PicturePointer*>(data); }, owner);
  auto texture = glib::adopt(
      GDK_PAINTABLE(gdk_memory_texture_new(picture->width, picture->height, GDK_MEMORY_R8G8B8A8_PREMULTIPLIED,
                                           bytes, static_cast<gsize>(picture->width) * 4)));
  g_bytes_unref(bytes);
  return texture;
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

GtkWidget* smallLabel() {
  auto* label = gtk_label_new(nullptr);
  gtk_label_set_xalign(GTK_LABEL(label), 1);
  gtk_label_set_single_line_mode(GTK_LABEL(label), TRUE);
  gtk_label_set_width_chars(GTK_LABEL(label), dateCharacters);
  for (const auto* each : {"attachment-end", "dim-label", "numeric"})
    gtk_widget_add_css_class(label, each);
  return label;
}

} // namespace

AttachmentRow::AttachmentRow(int height, ShowMenu showMenu)
    : showMenu_(std::move(showMenu)), place_(glib::share(adw_bin_new())) {
  gtk_widget_set_size_request(place_.get(), -1, height);
  gtk_widget_set_tooltip_text(place_.get(), "Show preview");
}

int AttachmentRow::naturalHeight() {
  AttachmentRow sample(-1, nullptr);
  sample.build();
  int height = 0;
  gtk_widget_measure(sample.widget(), GTK_ORIENTATION_VERTICAL, -1, nullptr, &height, nullptr, nullptr);
  return height;
}

void AttachmentRow::build() {
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
  for (auto* part : {makeThumbnail(), makeTexts(), makeEnd()})
    gtk_box_append(GTK_BOX(box), part);
  more_ = gtk_button_new_from_icon_name("view-more-symbolic");
  gtk_widget_set_size_request(more_, buttonSide, buttonSide);
  gtk_widget_set_valign(more_, GTK_ALIGN_CENTER);
  gtk_widget_set_tooltip_text(more_, "More actions");
  setAccessibleLabel(more_, "More actions");
  for (const auto* each : {"flat", "circular", "attachment-more"})
    gtk_widget_add_css_class(more_, each);
  clicked_ = glib::connect<void(GtkButton*)>(more_, "clicked", [this](GtkButton*) { showMenu_(*this); });
  gtk_box_append(GTK_BOX(box), more_);
  adw_bin_set_child(ADW_BIN(place_.get()), box);
}

GtkWidget* AttachmentRow::makeThumbnail() {
  symbol_ = gtk_image_new();
  gtk_widget_set_size_request(symbol_, thumbnailSide, thumbnailSide);
  gtk_widget_add_css_class(symbol_, "dim-label");
  gtk_widget_add_css_class(symbol_, "attachment-symbol");
  picture_ = GTK_PICTURE(gtk_picture_new());
  // Above the symbol, whose size it takes: a picture of any shape moves nothing.
  auto* overlay = gtk_overlay_new();
  gtk_widget_add_css_class(overlay, "attachment-thumbnail");
  gtk_widget_set_overflow(overlay, GTK_OVERFLOW_HIDDEN);
  gtk_widget_set_valign(overlay, GTK_ALIGN_CENTER);
  gtk_overlay_set_child(GTK_OVERLAY(overlay), symbol_);
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

GtkWidget* AttachmentRow::makeEnd() {
  date_ = smallLabel();
  size_ = smallLabel();
  auto* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  gtk_widget_set_valign(column, GTK_ALIGN_CENTER);
  gtk_box_append(GTK_BOX(column), date_);
  gtk_box_append(GTK_BOX(column), size_);
  return column;
}

void AttachmentRow::show(const AttachmentTexts& texts, attachments::AttachmentCategory category) {
  if (!name_)
    build();
  category_ = category;
  gtk_inscription_set_text(name_, texts.name.c_str());
  gtk_inscription_set_text(message_, texts.message.c_str());
  gtk_label_set_text(GTK_LABEL(date_), texts.date.c_str());
  gtk_label_set_text(GTK_LABEL(size_), texts.size.c_str());
  // The toolkit's own widget around this one is what takes the keyboard.
  if (auto* item = gtk_widget_get_parent(place_.get()))
    setAccessibleLabel(item, texts.spoken());
}

void AttachmentRow::setThumbnail(const platform::PicturePointer& thumbnail) {
  if (!name_)
    return;
  const bool hasPixels = thumbnail && thumbnail->width > 0 && thumbnail->height > 0;
  // All of a page that is higher than wide would be too small to tell anything.
  const bool isPhoto = category_ == attachments::AttachmentCategory::image;
  gtk_picture_set_content_fit(picture_, isPhoto ? GTK_CONTENT_FIT_COVER : GTK_CONTENT_FIT_CONTAIN);
  gtk_picture_set_paintable(picture_, hasPixels ? paintable(thumbnail).get() : nullptr);
  if (hasPixels)
    gtk_image_clear(GTK_IMAGE(symbol_));
  else
    gtk_image_set_from_icon_name(GTK_IMAGE(symbol_), categoryIcon(category_));
}

void AttachmentRow::setBusy(bool isBusy) {
  if (!name_ || isBusy == (spinner_ != nullptr))
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
  setAccessibleLabel(spinner_, "Working");
  gtk_spinner_start(GTK_SPINNER(spinner_));
  gtk_box_append(GTK_BOX(box), spinner_);
}

} // namespace ondrel::ui
