#include "attachments/FileName.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "platform/FileStore.h"

#include <fmt/format.h>

namespace ondrel::attachments {

namespace {

// With its dot; empty where the name has none.
std::string_view extensionOf(std::string_view name) {
  const auto dot = name.rfind('.');
  if (dot == name.npos || dot == 0 || dot + 1 == name.size())
    return {};
  const auto extension = name.substr(dot);
  // What had separators in it came from a path.
  return extension.find_first_of(" -", 1) == extension.npos ? extension : std::string_view();
}

} // namespace

std::string freePath(const std::string& folder, std::string_view name, platform::FileStore& files) {
  // TRANSLATORS: the name of a file that has none
  const auto safe = base::safeFileName(name, base::tr("Untitled"));
  const auto extension = extensionOf(safe);
  const auto base = std::string_view(safe).substr(0, safe.size() - extension.size());
  auto path = folder + "/" + safe;
  for (int n = 2; files.exists(path); ++n)
    path = fmt::format("{}/{} {}{}", folder, base, n, extension);
  return path;
}

std::string previewName(std::string_view blobId, std::string_view attachmentName) {
  constexpr std::string_view prefix = "preview-";
  const auto safe = base::safeFileName(attachmentName, "");
  return base::safeFileName(fmt::format("{}{}{}", prefix, blobId, extensionOf(safe)), prefix);
}

} // namespace ondrel::attachments
