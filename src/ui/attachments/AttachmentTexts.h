#pragma once

#include "attachments/AttachmentCategory.h"

#include <array>
#include <chrono>
#include <optional>
#include <string>

namespace ondrel::jmap {
struct AttachmentInfo;
}

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::ui {

// A kind of file as menus and rows show it.
struct CategoryFace {
  attachments::AttachmentCategory category;
  const char* title; // English, marked for translation
  const char* icon;
};
extern const std::array<CategoryFace, 9> categoryFaces; // in the order of the enum
const char* categoryIcon(attachments::AttachmentCategory category);

// What a row says, safe to show.
struct AttachmentTexts {
  std::string name;
  std::string message; // who sent it, and the subject
  std::string date;
  std::string size;

  // All of it, for those who hear the row.
  std::string spoken() const;
};
AttachmentTexts attachmentTexts(const jmap::AttachmentInfo& attachment,
                                const platform::TextFormatting& formatting);

// How many characters the longest dates have.
int dateCharacters(const platform::TextFormatting& formatting);

// "Since Jan 5, 2025"; empty where all is loaded, or nothing.
std::string sinceText(std::optional<std::chrono::sys_time<std::chrono::milliseconds>> oldest,
                      const platform::TextFormatting& formatting);

} // namespace ondrel::ui
