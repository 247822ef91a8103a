#pragma once

#include "platform/documents/ContentTypes.h"

#include <string>
#include <string_view>

namespace ondrel::ui {

enum class PreviewKind { image, pdf, text, media, other };

// The type that is said, or where that says nothing ("application/octet-stream") what the name makes likely.
std::string likelyType(const std::string& mimeType, const std::string& name);

PreviewKind previewKind(const platform::ContentTypes& types, std::string_view mimeType);

} // namespace ondrel::ui
