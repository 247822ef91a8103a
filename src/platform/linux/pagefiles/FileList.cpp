#include "platform/linux/pagefiles/FileList.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/glib/ReadUpTo.h"

#include <algorithm>
#include <span>
#include <unistd.h>

namespace ondrel::platform::pagefiles {

namespace {

using glib::adopt;
using glib::Ref;
using Files = std::vector<Ref<GFile>>;

constexpr const char* plainList = "text/uri-list"; // RFC 2483
// What a page of this engine has put there itself.
constexpr const char* typesOfPages[] = {"org.webkitgtk.WebKit.custom-pasteboard-data"};
// Of links and parts of pages.
constexpr const char* typesOfLinks[] = {"text/html", "text/x-moz-url", "_NETSCAPE_URL"};
// File managers offer one of these, and text of any kind beside. Pages can't.
constexpr const char* typesOfFileManagers[] = {
    "x-special/gnome-copied-files", "application/vnd.portal.filetransfer", "application/x-kde4-urilist"};
constexpr std::size_t longestList = std::size_t{1} << 24;

// The toolkit's calls for a drop and for the clipboard, which have the same shape.
struct OfDrop {
  static constexpr auto formats = gdk_drop_get_formats;
  static constexpr auto read = gdk_drop_read_async;
  static constexpr auto readEnd = gdk_drop_read_finish;
  static constexpr auto readValue = gdk_drop_read_value_async;
  static constexpr auto readValueEnd = gdk_drop_read_value_finish;
};
struct OfClipboard {
  static constexpr auto formats = gdk_clipboard_get_formats;
  static constexpr auto read = gdk_clipboard_read_async;
  static constexpr auto readEnd = gdk_clipboard_read_finish;
  static constexpr auto readValue = gdk_clipboard_read_value_async;
  static constexpr auto readValueEnd = gdk_clipboard_read_value_finish;
};

bool containAny(GdkContentFormats* formats, std::span<const char* const> types) {
  return std::ranges::any_of(
      types, [&](const char* type) { return gdk_content_formats_contain_mime_type(formats, type); });
}

bool isSandboxed() {
  return access("/.flatpak-info", F_OK) == 0;
}

Files filesIn(const std::string& list) {
  Files files;
  const glib::Owned<char*> uris(g_uri_list_extract_uris(list.c_str()));
  for (auto* uri = uris.get(); uri && *uri; ++uri)
    files.push_back(adopt(g_file_new_for_uri(*uri)));
  return files;
}

Files filesIn(const GValue* value) {
  Files files;
  auto* list = value ? static_cast<GdkFileList*>(g_value_get_boxed(value)) : nullptr;
  auto* nodes = list ? gdk_file_list_get_files(list) : nullptr;
  for (auto* node = nodes; node; node = node->next)
    files.push_back(glib::share(G_FILE(node->data)));
  g_slist_free(nodes);
  return files;
}

template <class Calls, class Source>
async::Task<Files> readPlainList(Ref<Source> source) {
  const char* types[] = {plainList, nullptr};
  auto [pending, future] = glib::startAsync();
  Calls::read(source.get(), types, G_PRIORITY_DEFAULT, pending.cancellable, glib::PendingCall::callback,
              pending.userData);
  const auto result = co_await std::move(future);
  glib::Error error;
  auto stream = adopt(result ? Calls::readEnd(source.get(), result->get(), nullptr, error.out()) : nullptr);
  if (!stream)
    co_return Files();
  const auto list = co_await glib::readUpTo(longestList, std::move(stream));
  co_return list ? filesIn(*list) : Files();
}

template <class Calls, class Source>
async::Task<Files> readValue(Ref<Source> source) {
  auto [pending, future] = glib::startAsync();
  Calls::readValue(source.get(), GDK_TYPE_FILE_LIST, G_PRIORITY_DEFAULT, pending.cancellable,
                   glib::PendingCall::callback, pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return Files();
  glib::Error error;
  co_return filesIn(Calls::readValueEnd(source.get(), result->get(), error.out()));
}

template <class Calls, class Source>
async::Task<Files> readAny(Ref<Source> source) {
  if (!isSandboxed() && gdk_content_formats_contain_mime_type(Calls::formats(source.get()), plainList)) {
    auto files = co_await readPlainList<Calls>(source);
    if (!files.empty())
      co_return files;
  }
  auto files = co_await readValue<Calls>(std::move(source));
  co_return files;
}

} // namespace

bool offersFiles(GdkContentFormats* formats) {
  return gdk_content_formats_contain_gtype(formats, GDK_TYPE_FILE_LIST) &&
         !containAny(formats, typesOfPages) &&
         (containAny(formats, typesOfFileManagers) || !containAny(formats, typesOfLinks));
}

async::Task<Files> readFiles(Ref<GdkDrop> drop) {
  return readAny<OfDrop>(std::move(drop));
}

async::Task<Files> readFiles(Ref<GdkClipboard> clipboard) {
  return readAny<OfClipboard>(std::move(clipboard));
}

} // namespace ondrel::platform::pagefiles
