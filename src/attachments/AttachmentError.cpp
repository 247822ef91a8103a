#include "attachments/AttachmentError.h"

#include <fmt/format.h>

namespace ondrel::attachments {

std::string AttachmentError::description() const {
  switch (kind) {
  case Kind::httpError:
    return fmt::format("Download failed (HTTP {}).", status);
  case Kind::noDownloadsFolder:
    return "Could not locate the Downloads folder.";
  case Kind::linkNotFound:
    return "Could not find the attachment link in the email.";
  case Kind::invalidResponse:
    return "Download failed (unexpected response).";
  case Kind::notSignedIn:
    return "Nobody is signed in. Sign in to your mail in a tab, then try again.";
  case Kind::told:
    return detail;
  case Kind::cancelled:
    return "The download was cancelled.";
  }
  return detail;
}

} // namespace ondrel::attachments
