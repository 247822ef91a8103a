#include "ui/attachments/AttachmentTexts.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "jmap/mail/AttachmentInfo.h"
#include "platform/TextFormatting.h"
#include "platform/linux/glib/Ref.h"

#include <algorithm>

namespace ondrel::ui {

using attachments::AttachmentCategory;

const std::array<CategoryFace, 9> categoryFaces{{
    // TRANSLATORS: kinds of files
    {AttachmentCategory::image, base::trMark("Images"), "image-x-generic-symbolic"},
    {AttachmentCategory::pdf, base::trMark("PDFs"), "x-office-document-symbolic"},
    {AttachmentCategory::archive, base::trMark("Archives"), "package-x-generic-symbolic"},
    {AttachmentCategory::movie, base::trMark("Videos"), "video-x-generic-symbolic"},
    // TRANSLATORS: a kind of files
    {AttachmentCategory::audio, base::trMark("Audio"), "audio-x-generic-symbolic"},
    {AttachmentCategory::spreadsheet, base::trMark("Spreadsheets"), "x-office-spreadsheet-symbolic"},
    {AttachmentCategory::presentation, base::trMark("Presentations"), "x-office-presentation-symbolic"},
    // TRANSLATORS: a kind of files
    {AttachmentCategory::text, base::trMark("Text"), "text-x-generic-symbolic"},
    // TRANSLATORS: files of other kinds
    {AttachmentCategory::other, base::trMark("Other"), "emblem-documents-symbolic"},
}};

const char* categoryIcon(AttachmentCategory category) {
  return std::ranges::find(categoryFaces, category, &CategoryFace::category)->icon;
}

std::string AttachmentTexts::spoken() const {
  // TRANSLATORS: read aloud of a file: its name, its message, the date, the size
  return base::trFormat("{0}, {1}, {2}, {3}", name, message, date, size);
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
  // TRANSLATORS: a date, before which no files have been loaded yet
  return oldest ? base::trFormat("Since {}", formatting.mediumDate(*oldest)) : "";
}

} // namespace ondrel::ui
