#include "ui/preview/PreviewKind.h"

#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

namespace ondrel::ui {

std::string likelyType(const std::string& mimeType, const std::string& name) {
  const auto said = base::lowercasedAscii(base::trimmed(mimeType));
  if (!said.empty() && said != "application/octet-stream" && said != "application/x-download" &&
      base::isValidUtf8(said))
    return said;
  const glib::CString guessed(g_content_type_guess(base::displayLine(name).c_str(), nullptr, 0, nullptr));
  const glib::CString type(guessed ? g_content_type_get_mime_type(guessed.get()) : nullptr);
  return type ? type.get() : "application/octet-stream";
}

PreviewKind previewKind(const platform::ContentTypes& types, std::string_view mimeType) {
  using Kind = platform::ContentKind;
  // Scalable graphics are text too, and PDF files of some types as well.
  if (types.conforms(mimeType, Kind::image))
    return PreviewKind::image;
  if (types.conforms(mimeType, Kind::pdf))
    return PreviewKind::pdf;
  if (types.conforms(mimeType, Kind::movie) || types.conforms(mimeType, Kind::audio))
    return PreviewKind::media;
  if (types.conforms(mimeType, Kind::text))
    return PreviewKind::text;
  return PreviewKind::other;
}

} // namespace ondrel::ui
