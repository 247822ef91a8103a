#include "ui/attachments/AttachmentSelection.h"

namespace ondrel::ui {

std::optional<std::size_t> AttachmentSelection::positionOf(const std::string& id, std::size_t hint) const {
  if (hint < files_.rowCount() && files_.row(hint).id == id)
    return hint;
  for (std::size_t i = 0; i < files_.rowCount(); ++i)
    if (files_.row(i).id == id)
      return i;
  return std::nullopt;
}

std::optional<std::size_t> AttachmentSelection::position() const {
  const auto found = id_ ? positionOf(*id_, hint_) : std::nullopt;
  hint_ = found.value_or(hint_);
  return found;
}

const jmap::AttachmentInfo* AttachmentSelection::row() const {
  const auto found = position();
  return found ? &files_.row(*found) : nullptr;
}

void AttachmentSelection::select(std::size_t position) {
  if (position >= files_.rowCount() || isSelected(files_.row(position)))
    return;
  id_ = files_.row(position).id;
  hint_ = position;
  changed.emit();
}

} // namespace ondrel::ui
