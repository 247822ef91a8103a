#pragma once

#include <string>
#include <vector>

namespace ondrel::ui {

// Files under the names that they have in the mail, each in a folder of its own, until this object goes. Who
// has taken a drop reads it when they like, so it has to outlive the window.
class DraggedCopies {
 public:
  DraggedCopies() = default;
  ~DraggedCopies();
  DraggedCopies(const DraggedCopies&) = delete;
  DraggedCopies& operator=(const DraggedCopies&) = delete;

  // The path of the same bytes on the disk; the one that was given where they can't have another name.
  std::string add(const std::string& path, const std::string& name);

 private:
  std::vector<std::string> folders_;
};

} // namespace ondrel::ui
