#include "attachments/AttachmentError.h"

#include "base/Translation.h"

namespace ondrel::attachments {

std::string AttachmentError::description() const {
  switch (kind) {
  case Kind::httpError:
    return base::trFormat("Download failed (HTTP {}).", status);
  case Kind::noDownloadsFolder:
    return base::tr("Could not locate the Downloads folder.");
  case Kind::linkNotFound:
    return base::tr("Could not find the attachment link in the email.");
  case Kind::invalidResponse:
    return base::tr("Download failed (unexpected response).");
  case Kind::notSignedIn:
    return base::tr("Nobody is signed in. Sign in to your mail in a tab, then try again.");
  case Kind::told:
    return detail;
  case Kind::cancelled:
    return base::tr("The download was cancelled.");
  }
  return detail;
}

} // namespace ondrel::attachments
