#include "ui/preview/TextPart.h"

#include "platform/linux/glib/AsyncResult.h"
#include "ui/preview/PreviewText.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <optional>
#include <string_view>

namespace ondrel::ui {

namespace {

using glib::adopt;
using glib::Ref;

constexpr int margin = 12;
constexpr gsize pieceSize = gsize{256} << 10;

async::Task<std::optional<std::string>> readBeginning(std::string path, std::size_t limit) {
  const auto file = adopt(g_file_new_for_path(path.c_str()));
  glib::Error error;
  auto [opening, opened] = glib::startAsync();
  g_file_read_async(file.get(), G_PRIORITY_DEFAULT, opening.cancellable, glib::PendingCall::callback,
                    opening.userData);
  const auto openResult = co_await std::move(opened);
  if (!openResult)
    co_return std::nullopt;
  const auto stream = adopt(g_file_read_finish(file.get(), openResult->get(), error.out()));
  if (!stream)
    co_return std::nullopt;
  std::string result;
  while (result.size() < limit) {
    auto [reading, read] = glib::startAsync();
    g_input_stream_read_bytes_async(G_INPUT_STREAM(stream.get()), std::min(pieceSize, limit - result.size()),
                                    G_PRIORITY_DEFAULT, reading.cancellable, glib::PendingCall::callback,
                                    reading.userData);
    const auto readResult = co_await std::move(read);
    if (!readResult)
      co_return std::nullopt;
    const glib::Owned<GBytes> bytes(
        g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream.get()), readResult->get(), error.out()));
    if (!bytes)
      co_return std::nullopt;
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    if (size == 0)
      break;
    result.append(data, size);
  }
  co_return result;
}

} // namespace

async::Task<std::unique_ptr<PreviewPart>> TextPart::open(std::string path, std::string label) {
  // One more byte tells whether there is more.
  auto bytes = co_await readBeginning(std::move(path), longestText + 1);
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
    auto* notice = wrappedLabel("This is the beginning of the file. The rest is too long to be shown here.");
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
