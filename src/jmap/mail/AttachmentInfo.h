#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace ondrel::jmap {

// One attachment of one email.
struct AttachmentInfo {
  std::string id; // emailId "-" blobId: one row each
  std::string emailId;
  std::string blobId; // the key of what is kept of its bytes
  std::string name;
  std::string type;      // MIME
  std::int64_t size = 0; // bytes
  std::string subject;
  std::string from; // to show
  std::chrono::sys_time<std::chrono::milliseconds> receivedAt;

  bool operator==(const AttachmentInfo&) const = default;
};

struct AttachmentPage {
  std::vector<AttachmentInfo> attachments;
  std::int64_t emailCount = 0; // in this page: what the next position starts from
  std::int64_t total = 0;      // of all emails that match
};

} // namespace ondrel::jmap
