#include "platform/linux/desktop/LinuxClipboard.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/text/SafeText.h"

#include <gtk/gtk.h>

namespace ondrel::platform::desktop {

namespace {

glib::Ref<GdkClipboard> clipboard() {
  auto* display = gdk_display_get_default();
  return display ? glib::share(gdk_display_get_clipboard(display)) : nullptr;
}

} // namespace

async::Task<std::optional<std::string>> LinuxClipboard::readString() {
  const auto source = clipboard();
  if (!source)
    co_return std::nullopt;
  auto [pending, result] = glib::startAsync();
  gdk_clipboard_read_text_async(source.get(), pending.cancellable, glib::PendingCall::callback,
                                pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return std::nullopt;
  glib::Error error;
  const glib::CString text(gdk_clipboard_read_text_finish(source.get(), finished->get(), error.out()));
  // An empty clipboard and one without text are errors to the toolkit, but none to anybody else.
  if (!text)
    co_return std::nullopt;
  co_return std::string(text.get());
}

void LinuxClipboard::writeString(const std::string& text) {
  if (const auto target = clipboard())
    gdk_clipboard_set_text(target.get(), text::validUtf8(text).c_str());
}

} // namespace ondrel::platform::desktop
