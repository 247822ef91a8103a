#pragma once

#include "attachments/FilesViewModel.h"
#include "base/Event.h"

#include <cstddef>
#include <optional>
#include <string>

namespace ondrel::ui {

// The selected row of the window, by its id, which stays so while the row is filtered out.
class AttachmentSelection {
 public:
  explicit AttachmentSelection(const attachments::FilesViewModel& files) : files_(files) {} // outlives it

  bool isSelected(const jmap::AttachmentInfo& row) const { return id_ == row.id; }
  // Where the selected row is among those that are listed.
  std::optional<std::size_t> position() const;
  const jmap::AttachmentInfo* row() const; // null where it isn't listed
  void select(std::size_t position);
  // Where the row of that id is; looked for at the hint first.
  std::optional<std::size_t> positionOf(const std::string& id, std::size_t hint) const;

  base::Event<> changed;

 private:
  const attachments::FilesViewModel& files_;
  std::optional<std::string> id_;
  mutable std::size_t hint_ = 0; // where it was last
};

} // namespace ondrel::ui
