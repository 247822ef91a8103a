#include "ui/attachments/DraggedCopies.h"

#include "base/Text.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace ondrel::ui {

DraggedCopies::~DraggedCopies() {
  std::error_code ignored;
  for (const auto& folder : folders_)
    std::filesystem::remove_all(folder, ignored);
}

std::string DraggedCopies::add(const std::string& path, const std::string& name) {
  auto folder = path.substr(0, path.rfind('/') + 1) + "dragged-XXXXXX";
  if (!mkdtemp(folder.data()))
    return path;
  folders_.push_back(folder);
  auto copy = folder + "/" + base::safeFileName(name, "Attachment");
  return link(path.c_str(), copy.c_str()) == 0 ? copy : path;
}

} // namespace ondrel::ui
