#include "ui/settings/SetupCommandRow.h"

#include "base/Translation.h"
#include "ui/widgets/Widgets.h"

#include <chrono>

namespace ondrel::ui {

namespace {

constexpr std::chrono::seconds copiedTime{2};
constexpr int margin = 12;

GtkWidget* captionLabel(const std::string& caption) {
  auto* label = gtk_label_new(caption.c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_widget_set_hexpand(label, TRUE);
  return label;
}

void wrapAnywhere(GtkLabel* label) {
  gtk_label_set_wrap(label, TRUE);
  gtk_label_set_wrap_mode(label, PANGO_WRAP_CHAR);
  // A hyphen at the end of a line would look like a part of the command.
  auto* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
  gtk_label_set_attributes(label, attributes);
  pango_attr_list_unref(attributes);
}

} // namespace

SetupCommandRow::SetupCommandRow(const std::string& caption, const std::string& copyLabel,
                                 std::function<void()> copy)
    : copyLabel_(copyLabel), row_(glib::share(adw_preferences_row_new())),
      command_(GTK_LABEL(gtk_label_new(nullptr))), button_(gtk_button_new()),
      content_(ADW_BUTTON_CONTENT(adw_button_content_new())) {
  gtk_widget_set_name(row_.get(), "mcp-setup-command");
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row_.get()), FALSE);
  gtk_widget_set_focusable(row_.get(), FALSE);

  gtk_label_set_selectable(command_, TRUE);
  gtk_label_set_xalign(command_, 0);
  wrapAnywhere(command_);
  for (const auto* style : {"monospace", "caption", "setup-command"})
    gtk_widget_add_css_class(GTK_WIDGET(command_), style);
  setAccessibleLabel(GTK_WIDGET(command_), caption);

  adw_button_content_set_use_underline(content_, TRUE);
  gtk_widget_set_halign(GTK_WIDGET(content_), GTK_ALIGN_CENTER);
  gtk_button_set_child(GTK_BUTTON(button_), GTK_WIDGET(content_));
  gtk_widget_set_name(button_, "copy-setup-command");
  gtk_widget_set_valign(button_, GTK_ALIGN_CENTER);
  clicked_ = glib::connect<void(GtkButton*)>(button_, "clicked", [this, copy = std::move(copy)](GtkButton*) {
    copy();
    showCopied();
  });
  wrapText(button_);
  showCopy();

  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, margin);
  for (const auto setMargin : {gtk_widget_set_margin_top, gtk_widget_set_margin_bottom,
                               gtk_widget_set_margin_start, gtk_widget_set_margin_end})
    setMargin(box, margin);
  auto* top = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, margin);
  for (auto* part : {captionLabel(caption), button_})
    gtk_box_append(GTK_BOX(top), part);
  for (auto* part : {top, GTK_WIDGET(command_)})
    gtk_box_append(GTK_BOX(box), part);
  gtk_list_box_row_set_child(GTK_LIST_BOX_ROW(row_.get()), box);
}

void SetupCommandRow::setCommand(const std::string& command) {
  // A new text would lose what is selected.
  if (command != gtk_label_get_text(command_))
    gtk_label_set_text(command_, command.c_str());
}

void SetupCommandRow::showCopied() {
  // It must not shrink under the pointer.
  gtk_widget_set_size_request(button_, gtk_widget_get_width(button_), -1);
  adw_button_content_set_icon_name(content_, "object-select-symbolic");
  // TRANSLATORS: on the button that has copied the command
  adw_button_content_set_label(content_, base::tr("Copied"));
  setAccessibleLabel(button_, base::tr("Copied"));
  copied_ = async::Timer(copiedTime, [this] { showCopy(); });
}

void SetupCommandRow::showCopy() {
  gtk_widget_set_size_request(button_, -1, -1);
  adw_button_content_set_icon_name(content_, "edit-copy-symbolic");
  adw_button_content_set_label(content_, ("_" + copyLabel_).c_str());
  setAccessibleLabel(button_, copyLabel_);
}

} // namespace ondrel::ui
