#include "ui/preview/TextPart.h"

#include "base/Translation.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/glib/ReadUpTo.h"
#include "ui/preview/PreviewText.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <string_view>

namespace ondrel::ui {

namespace {

using glib::adopt;
using glib::Ref;

constexpr int margin = 12;

async::Task<Ref<GInputStream>> streamOf(std::string path) {
  const auto file = adopt(g_file_new_for_path(path.c_str()));
  auto [opening, opened] = glib::startAsync();
  g_file_read_async(file.get(), G_PRIORITY_DEFAULT, opening.cancellable, glib::PendingCall::callback,
                    opening.userData);
  const auto result = co_await std::move(opened);
  glib::Error error;
  co_return adopt(
      G_INPUT_STREAM(result ? g_file_read_finish(file.get(), result->get(), error.out()) : nullptr));
}

} // namespace

async::Task<std::unique_ptr<PreviewPart>> TextPart::open(std::string path, std::string label) {
  auto stream = co_await streamOf(std::move(path));
  if (!stream)
    co_return nullptr;
  const auto bytes = co_await glib::readUpTo(longestText, std::move(stream));
  if (!bytes)
    co_return nullptr;
  const bool isCut = bytes->size() > longestText;
  const auto text = previewText(std::string_view(*bytes).substr(0, longestText), isCut);
  if (!text)
    co_return nullptr;
  co_return std::make_unique<TextPart>(*text, isCut, label);
}

TextPart::TextPart(const std::string& text, bool isCut, const std::string& label) {
  auto* view = gtk_text_view_new();
  gtk_widget_set_name(view, "preview-text");
  auto* textView = GTK_TEXT_VIEW(view);
  gtk_text_view_set_editable(textView, FALSE);
  gtk_text_view_set_cursor_visible(textView, FALSE);
  gtk_text_view_set_monospace(textView, TRUE);
  gtk_text_view_set_wrap_mode(textView, GTK_WRAP_WORD_CHAR);
  gtk_text_view_set_left_margin(textView, margin);
  gtk_text_view_set_right_margin(textView, margin);
  gtk_text_view_set_top_margin(textView, margin);
  gtk_text_view_set_bottom_margin(textView, margin);
  gtk_text_buffer_set_text(gtk_text_view_get_buffer(textView), text.data(), static_cast<int>(text.size()));
  setAccessibleLabel(view, label);

  auto* scroller = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), view);
  gtk_widget_set_vexpand(scroller, TRUE);
  vertical_ = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller));
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  if (isCut) {
    auto* notice =
        wrappedLabel(base::tr("This is the beginning of the file. The rest is too long to be shown here."));
    gtk_widget_set_name(notice, "preview-cut");
    gtk_widget_add_css_class(notice, "page-problem");
    gtk_box_append(GTK_BOX(box), notice);
  }
  gtk_box_append(GTK_BOX(box), scroller);
  widget_ = glib::share(box);
}

bool TextPart::scroll(int step) {
  const auto old = gtk_adjustment_get_value(vertical_);
  gtk_adjustment_set_value(vertical_, old + step * gtk_adjustment_get_step_increment(vertical_));
  return true;
}

} // namespace ondrel::ui
