#pragma once

#include "async/Task.h"
#include "attachments/AttachmentError.h"
#include "platform/NewFile.h"

#include <cstdint>
#include <functional>
#include <string>

namespace ondrel::platform {
class HttpClient;
}

namespace ondrel::attachments {

struct Transfer {
  std::string url;
  std::string path; // of the file
  platform::NewFiles::Existing existing = platform::NewFiles::Existing::stays;
  std::int64_t size = 0; // as the mail tells it; 0: not known
};

struct TransferFollower {
  // What has arrived of how much; -1: not known.
  std::function<void(std::int64_t written, std::int64_t total)> progressed;
  // All is there and goes to its place, which can't be taken back.
  std::function<void()> arrived;
};

// Fetches an address into a file, piece by piece: no size is too large, and nothing is left of a file that
// didn't become whole. Where the server doesn't say how long it is, as of one in chunks, the mail's size
// tells whether it did: a connection that ends between two chunks looks like the end. Both abilities outlive
// it.
async::Task<Result<void>> fetchToFile(platform::HttpClient& http, platform::NewFiles& newFiles,
                                      Transfer transfer, TransferFollower follower);

} // namespace ondrel::attachments
