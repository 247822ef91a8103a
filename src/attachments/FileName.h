#pragma once

#include <string>
#include <string_view>

namespace ondrel::platform {
class FileStore;
}

namespace ondrel::attachments {

// Where a file of that name can go in a folder: under the name, or one with a number, "name 2.pdf", where
// files have it already. The name may be a stranger's.
std::string freePath(const std::string& folder, std::string_view name, platform::FileStore& files);

// The name for a copy of a blob to look at, which ends as the attachment's name does: what opens it goes by
// that.
std::string previewName(std::string_view blobId, std::string_view attachmentName);

} // namespace ondrel::attachments
