#pragma once

#include <string_view>

namespace ondrel::platform {

enum class ContentKind { image, pdf, archive, movie, audio, spreadsheet, presentation, text };

// What the system knows of kinds of content.
class ContentTypes {
 public:
  virtual ~ContentTypes() = default;
  // Whether content of that MIME type is also of the kind, as a picture of scalable graphics is text too. A
  // type that the system doesn't know is of no kind. A first answer may read files; later ones are kept.
  virtual bool conforms(std::string_view mimeType, ContentKind kind) const = 0;
};

} // namespace ondrel::platform
