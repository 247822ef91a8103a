#include "ui/attachments/FilePreview.h"

#include "base/Text.h"

#include <utility>

namespace ondrel::ui {

FilePreview::FilePreview(attachments::FilesViewModel& files, PreviewPanel& panel, Rows rows)
    : files_(files), panel_(panel), rows_(std::move(rows)) {
  subscriptions_.push_back(files_.previewURL.observe([this] { arrived(); }));
  subscriptions_.push_back(files_.busyChanged.subscribe([this](const std::string& id) { ended(id); }));
}

FilePreview::~FilePreview() {
  subscriptions_.clear();
  if (panel_.isOpen())
    panel_.close();
}

void FilePreview::show(jmap::AttachmentInfo attachment) {
  wanted_ = attachment;
  // It may be on its way already; then it comes by itself.
  if (!files_.isBusy(attachment.id))
    files_.preview(attachment);
  if (wanted_ && panel_.isOpen())
    panel_.showLoading(base::shortDisplayLine(attachment.name));
}

void FilePreview::arrived() {
  const auto& path = *files_.previewURL;
  if (!path || !wanted_ || files_.previewedBlobId() != wanted_->blobId)
    return;
  const auto attachment = *std::exchange(wanted_, std::nullopt);
  panel_.show({*path, attachment.name, attachment.type}, [this](int step) {
    if (const auto* next = rows_.step(step))
      show(*next);
  });
  tellNeighbours();
}

// Later: one change of the rows may come in many parts.
void FilePreview::followRows() {
  if (panel_.isOpen())
    later_ = async::Timer(async::Duration(0), [this] { tellNeighbours(); });
}

void FilePreview::tellNeighbours() {
  if (panel_.isOpen())
    panel_.setNeighbours(rows_.neighbours());
}

// A file that has come is wanted no longer.
void FilePreview::ended(const std::string& id) {
  if (!wanted_ || wanted_->id != id || files_.isBusy(id))
    return;
  const auto attachment = *std::exchange(wanted_, std::nullopt);
  if (*files_.errorMessage && panel_.isOpen())
    panel_.showError(base::shortDisplayLine(**files_.errorMessage));
  else if (!*files_.errorMessage)
    show(attachment); // the row was busy with something else
}

} // namespace ondrel::ui
