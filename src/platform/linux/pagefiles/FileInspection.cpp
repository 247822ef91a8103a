#include "platform/linux/pagefiles/FileInspection.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/text/SafeText.h"

namespace ondrel::platform::pagefiles {

namespace {

using glib::adopt;
using glib::CString;
using glib::Ref;
using Reason = RefusedFile::Reason;

constexpr const char* attributes = "standard::type,standard::size,standard::content-type,access::can-read,"
                                   "time::modified,time::modified-usec";
constexpr std::int64_t milliseconds = 1000; // in a second

async::Task<Ref<GFileInfo>> query(Ref<GFile> file) {
  auto [pending, result] = glib::startAsync();
  g_file_query_info_async(file.get(), attributes, G_FILE_QUERY_INFO_NONE, G_PRIORITY_DEFAULT,
                          pending.cancellable, glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return nullptr;
  glib::Error error;
  co_return adopt(g_file_query_info_finish(file.get(), finished->get(), error.out()));
}

std::string nameOf(GFile* file) {
  const CString name(g_file_get_basename(file));
  return text::validUtf8(name ? name.get() : "");
}

std::string mimeTypeOf(GFileInfo* info) {
  const auto* content = g_file_info_get_content_type(info);
  const CString type(content ? g_content_type_get_mime_type(content) : nullptr);
  return type ? text::validUtf8(type.get()) : std::string();
}

} // namespace

async::Task<FileInspection> inspectFiles(std::vector<Ref<GFile>> files) {
  FileInspection result;
  for (const auto& file : files) {
    auto name = nameOf(file.get());
    const auto info = co_await query(file);
    const auto type = info ? g_file_info_get_file_type(info.get()) : G_FILE_TYPE_UNKNOWN;
    const CString path(g_file_get_path(file.get()));
    if (type == G_FILE_TYPE_DIRECTORY) {
      result.refused.push_back({std::move(name), Reason::folder});
    } else if (type != G_FILE_TYPE_REGULAR || !path || result.files.size() == mostFilesAtOnce ||
               !g_file_info_get_attribute_boolean(info.get(), G_FILE_ATTRIBUTE_ACCESS_CAN_READ)) {
      result.refused.push_back({std::move(name), Reason::unreadable});
    } else {
      const auto seconds = g_file_info_get_attribute_uint64(info.get(), G_FILE_ATTRIBUTE_TIME_MODIFIED);
      const auto rest =
          g_file_info_get_attribute_uint32(info.get(), G_FILE_ATTRIBUTE_TIME_MODIFIED_USEC) / milliseconds;
      result.files.push_back(
          {path.get(), std::move(name), mimeTypeOf(info.get()),
           static_cast<std::uint64_t>(g_file_info_get_size(info.get())),
           static_cast<std::int64_t>(seconds) * milliseconds + static_cast<std::int64_t>(rest)});
    }
  }
  co_return std::move(result);
}

} // namespace ondrel::platform::pagefiles
