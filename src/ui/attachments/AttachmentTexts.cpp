#include "ui/attachments/AttachmentTexts.h"

#include "base/Text.h"
#include "jmap/mail/AttachmentInfo.h"
#include "platform/TextFormatting.h"
#include "platform/linux/glib/Ref.h"

#include <algorithm>

namespace ondrel::ui {

using attachments::AttachmentCategory;

const std::array<CategoryFace, 9> categoryFaces{{
    {AttachmentCategory::image, "Images", "image-x-generic-symbolic"},
    {AttachmentCategory::pdf, "PDFs", "x-office-document-symbolic"},
    {AttachmentCategory::archive, "Archives", "package-x-generic-symbolic"},
    {AttachmentCategory::movie, "Videos", "video-x-generic-symbolic"},
    {AttachmentCategory::audio, "Audio", "audio-x-generic-symbolic"},
    {AttachmentCategory::spreadsheet, "Spreadsheets", "x-office-spreadsheet-symbolic"},
    {AttachmentCategory::presentation, "Presentations", "x-office-presentation-symbolic"},
    {AttachmentCategory::text, "Text", "text-x-generic-symbolic"},
    {AttachmentCategory::other, "Other", "emblem-documents-symbolic"},
}};

const char* categoryIcon(AttachmentCategory category) {
  return std::ranges::find(categoryFaces, category, &CategoryFace::category)->icon;
}

std::string AttachmentTexts::spoken() const {
  return name + ", " + message + ", " + date + ", " + size;
}

AttachmentTexts attachmentTexts(const jmap::AttachmentInfo& attachment,
                                const platform::TextFormatting& formatting) {
  const auto bytes = static_cast<guint64>(std::max<std::int64_t>(attachment.size, 0));
  return {.name = base::shortDisplayLine(attachment.name),
          .message =
              base::shortDisplayLine(attachment.from) + " · " + base::shortDisplayLine(attachment.subject),
          .date = formatting.mediumDate(attachment.receivedAt),
          .size = glib::CString(g_format_size(bytes)).get()};
}

int dateCharacters(const platform::TextFormatting& formatting) {
  using namespace std::chrono;
  glong longest = 0;
  for (auto month = year{2024} / January; month.year() == year{2024}; month += months{1})
    longest = std::max(longest, g_utf8_strlen(formatting.mediumDate(sys_days(month / 28)).c_str(), -1));
  return static_cast<int>(longest);
}

std::string sinceText(std::optional<std::chrono::sys_time<std::chrono::milliseconds>> oldest,
                      const platform::TextFormatting& formatting) {
  return oldest ? "Since " + formatting.mediumDate(*oldest) : "";
}

} // namespace ondrel::ui
