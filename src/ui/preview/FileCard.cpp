#include "ui/preview/FileCard.h"

#include "ui/widgets/Widgets.h"

#include <adwaita.h>
#include <fmt/format.h>

#include <filesystem>

namespace ondrel::ui {

namespace {

constexpr int iconSize = 96;
constexpr int spacing = 12;

GtkWidget* centred(const std::string& text, const char* style) {
  auto* label = wrappedLabel(text.c_str());
  gtk_label_set_justify(GTK_LABEL(label), GTK_JUSTIFY_CENTER);
  gtk_label_set_xalign(GTK_LABEL(label), 0.5F);
  gtk_widget_add_css_class(label, style);
  return label;
}

std::string typeAndSize(const FileCard::Options& options) {
  const glib::CString type(g_content_type_from_mime_type(options.mimeType.c_str()));
  const glib::CString description(type ? g_content_type_get_description(type.get()) : nullptr);
  const std::string kind = description ? description.get() : options.mimeType;
  std::error_code error;
  const auto size = std::filesystem::file_size(options.path, error);
  return error ? kind : fmt::format("{} · {}", kind, glib::CString(g_format_size(size)).get());
}

GtkWidget* icon(const std::string& mimeType) {
  const glib::CString type(g_content_type_from_mime_type(mimeType.c_str()));
  const auto picture = glib::adopt(g_content_type_get_icon(type ? type.get() : "application/octet-stream"));
  auto* image = gtk_image_new_from_gicon(picture.get());
  gtk_image_set_pixel_size(GTK_IMAGE(image), iconSize);
  return image;
}

} // namespace

FileCard::FileCard(const Options& options) {
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing);
  gtk_widget_set_name(box, "preview-card");
  gtk_widget_set_focusable(box, TRUE);
  card_ = box;
  gtk_widget_set_valign(box, GTK_ALIGN_CENTER);
  gtk_widget_set_vexpand(box, TRUE);
  for (const auto set : {gtk_widget_set_margin_start, gtk_widget_set_margin_end, gtk_widget_set_margin_top,
                         gtk_widget_set_margin_bottom})
    set(box, 2 * spacing);
  gtk_box_append(GTK_BOX(box), icon(options.mimeType));
  gtk_box_append(GTK_BOX(box), centred(options.name, "title-2"));
  gtk_box_append(GTK_BOX(box), centred(typeAndSize(options), "dim-label"));
  if (!options.note.empty())
    gtk_box_append(GTK_BOX(box), centred(options.note, "body"));
  if (options.controls)
    gtk_box_append(GTK_BOX(box), options.controls);
  if (options.action)
    addButton(options);
  auto* scroller = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), box);
  gtk_widget_set_vexpand(scroller, TRUE);
  widget_ = glib::share(scroller);
}

void FileCard::addButton(const Options& options) {
  auto* button = gtk_button_new_with_label(options.action);
  gtk_widget_set_name(button, "preview-act");
  gtk_widget_add_css_class(button, "pill");
  gtk_widget_add_css_class(button, "suggested-action");
  gtk_widget_set_halign(button, GTK_ALIGN_CENTER);
  gtk_widget_set_margin_top(button, spacing);
  clicked_ = glib::connect<void(GtkButton*)>(button, "clicked", [act = options.act](GtkButton*) { act(); });
  gtk_box_append(GTK_BOX(card_), button);
}

} // namespace ondrel::ui
