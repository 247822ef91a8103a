#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "attachments/AttachmentError.h"
#include "base/Event.h"
#include "base/Log.h"
#include "jmap/mail/AttachmentInfo.h"
#include "platform/documents/DocumentDecoder.h"

#include <cstddef>
#include <list>
#include <map>
#include <string>

namespace ondrel::attachments {

class AttachmentDownloader;

// Small pictures of what is attached, by blob id: those seen last, as many as fit into a fixed amount of
// memory. Main thread only.
class Thumbnails {
 public:
  static constexpr std::size_t mostBytes = std::size_t{32} << 20;

  // The downloader outlives it.
  explicit Thumbnails(AttachmentDownloader& downloader) : downloader_(downloader) {}

  // Null while there is none.
  platform::PicturePointer find(const std::string& blobId) const;
  // Fetches it unless it is there or under way. Of a failure nothing is remembered.
  void load(const jmap::AttachmentInfo& info);
  // One who has asked wants it no longer. A request that nobody wants and that still waits is taken back.
  void drop(const std::string& blobId);

  base::Event<const std::string& /*blobId*/> changed;

 private:
  struct Kept {
    std::string blobId;
    platform::PicturePointer picture;
  };
  struct Wanted {
    int askers = 0;
    bool isWaiting = true; // for the requests before it
    async::TaskHandle task;
  };

  async::Task<void> take(jmap::AttachmentInfo info, async::Task<Result<platform::PicturePointer>> request);
  void keep(const std::string& blobId, platform::PicturePointer picture);

  AttachmentDownloader& downloader_;
  const base::Logger logger_{"network"};
  mutable std::list<Kept> kept_; // the one seen last comes first
  std::map<std::string, std::list<Kept>::iterator> places_;
  std::size_t bytes_ = 0;
  std::map<std::string, Wanted> wanted_;
  async::Scope scope_;
};

} // namespace ondrel::attachments
