#pragma once

#include <array>
#include <string_view>

namespace ondrel::platform {
class ContentTypes;
}

namespace ondrel::attachments {

enum class AttachmentCategory { image, pdf, archive, movie, audio, spreadsheet, presentation, text, other };

inline constexpr std::array attachmentCategories{
    AttachmentCategory::image,        AttachmentCategory::pdf,   AttachmentCategory::archive,
    AttachmentCategory::movie,        AttachmentCategory::audio, AttachmentCategory::spreadsheet,
    AttachmentCategory::presentation, AttachmentCategory::text,  AttachmentCategory::other};

// By the type alone: a file's name plays no part. Of a type that is of several categories, the first in their
// order.
AttachmentCategory category(const platform::ContentTypes& types, std::string_view mimeType);

constexpr bool isPrintable(AttachmentCategory category) {
  return category == AttachmentCategory::image || category == AttachmentCategory::pdf;
}

} // namespace ondrel::attachments
