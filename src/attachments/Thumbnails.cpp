#include "attachments/Thumbnails.h"

#include "async/sleep.h"
#include "attachments/AttachmentDownloader.h"

#include <utility>

namespace ondrel::attachments {

namespace {

std::size_t bytesOf(const platform::Picture& picture) {
  return sizeof(picture) + picture.pixels.size();
}

} // namespace

platform::PicturePointer Thumbnails::find(const std::string& blobId) const {
  const auto found = places_.find(blobId);
  if (found == places_.end())
    return nullptr;
  kept_.splice(kept_.begin(), kept_, found->second);
  return found->second->picture;
}

void Thumbnails::load(const jmap::AttachmentInfo& info) {
  if (places_.contains(info.blobId))
    return;
  auto [wanted, isNew] = wanted_.try_emplace(info.blobId);
  ++wanted->second.askers;
  if (!isNew)
    return;
  auto request = downloader_.thumbnail(info, [this, blobId = info.blobId] {
    if (const auto begun = wanted_.find(blobId); begun != wanted_.end())
      begun->second.isWaiting = false;
  });
  wanted->second.task = scope_.spawn(take(info, std::move(request)));
}

void Thumbnails::drop(const std::string& blobId) {
  const auto found = wanted_.find(blobId);
  if (found == wanted_.end() || --found->second.askers > 0 || !found->second.isWaiting)
    return;
  found->second.task.cancel();
  wanted_.erase(found);
}

async::Task<void> Thumbnails::take(jmap::AttachmentInfo info,
                                   async::Task<Result<platform::PicturePointer>> request) {
  const auto picture = co_await std::move(request);
  const bool isTakenBack = co_await async::cancelled();
  if (isTakenBack)
    co_return; // somebody may have asked anew
  wanted_.erase(info.blobId);
  if (!picture) {
    logger_.error("FilesViewModel: thumbnail failed for {}: {}", info.name, picture.error().description());
    co_return;
  }
  keep(info.blobId, *picture);
  changed.emit(info.blobId);
}

void Thumbnails::keep(const std::string& blobId, platform::PicturePointer picture) {
  bytes_ += bytesOf(*picture);
  kept_.push_front({blobId, std::move(picture)});
  places_[blobId] = kept_.begin();
  while (bytes_ > mostBytes && kept_.size() > 1) {
    bytes_ -= bytesOf(*kept_.back().picture);
    places_.erase(kept_.back().blobId);
    kept_.pop_back();
  }
}

} // namespace ondrel::attachments
