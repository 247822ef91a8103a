#include "ui/attachments/FilePreview.h"

#include "base/Text.h"

#include <utility>

namespace ondrel::ui {

FilePreview::FilePreview(attachments::FilesViewModel& files, PreviewPanel& panel, Rows rows)
    : files_(files), panel_(panel), rows_(std::move(rows)) {
  subscriptions_.push_back(files_.previewURL.observe([this] { arrived(); }));
  subscriptions_.push_back(files_.busyChanged.subscribe([this](const std::string& id) { ended(id); }));
  subscriptions_.push_back(panel_.closed.subscribe([this] { forget(); }));
}

FilePreview::~FilePreview() {
  subscriptions_.clear();
  if (panel_.isOpen())
    panel_.close();
}

void FilePreview::show(jmap::AttachmentInfo attachment) {
  const bool isFree = !files_.isBusy(attachment.id);
  const bool isOnItsWay = wanted_ && wanted_->isStarted && wanted_->attachment.id == attachment.id;
  wanted_ = {attachment, isFree || isOnItsWay};
  if (isFree)
    files_.preview(attachment);
  if (wanted_ && panel_.isOpen())
    panel_.showLoading(base::shortDisplayLine(attachment.name));
}

void FilePreview::arrived() {
  const auto& path = *files_.previewURL;
  if (!path || !wanted_ || files_.previewedBlobId() != wanted_->attachment.blobId)
    return;
  const auto attachment = std::exchange(wanted_, std::nullopt)->attachment;
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

// Who closes the preview waits for no file.
void FilePreview::forget() {
  wanted_.reset();
  files_.dropPreview();
}

// A file that has come is wanted no longer.
void FilePreview::ended(const std::string& id) {
  if (!wanted_ || wanted_->attachment.id != id || files_.isBusy(id))
    return;
  const auto ended = *std::exchange(wanted_, std::nullopt);
  if (!ended.isStarted)
    show(ended.attachment);
  else if (*files_.errorMessage && panel_.isOpen())
    panel_.showError(base::shortDisplayLine(**files_.errorMessage));
}

} // namespace ondrel::ui
