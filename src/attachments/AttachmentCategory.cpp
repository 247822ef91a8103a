#include "attachments/AttachmentCategory.h"

#include "platform/documents/ContentTypes.h"

#include <utility>

namespace ondrel::attachments {

AttachmentCategory category(const platform::ContentTypes& types, std::string_view mimeType) {
  using platform::ContentKind;
  constexpr std::pair<ContentKind, AttachmentCategory> inOrder[] = {
      {ContentKind::image, AttachmentCategory::image},
      {ContentKind::pdf, AttachmentCategory::pdf},
      {ContentKind::archive, AttachmentCategory::archive},
      {ContentKind::movie, AttachmentCategory::movie},
      {ContentKind::audio, AttachmentCategory::audio},
      {ContentKind::spreadsheet, AttachmentCategory::spreadsheet},
      {ContentKind::presentation, AttachmentCategory::presentation},
      {ContentKind::text, AttachmentCategory::text},
  };
  for (const auto& [kind, result] : inOrder)
    if (types.conforms(mimeType, kind))
      return result;
  return AttachmentCategory::other;
}

} // namespace ondrel::attachments
