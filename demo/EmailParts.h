#pragma once

#include "demo/MailStore.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo {

// A leaf of the body, as RFC 8621, 4.1.4, sees it. A message of the page's own flow has its text twice, as
// plain text and as HTML; one that is shown in a frame is HTML alone; one may have no text at all.
struct EmailPart {
  std::string partId;
  std::string blobId;
  std::string name; // empty when it has none
  std::string type;
  std::string charset;
  std::string disposition;
  std::string cid;
  std::size_t size = 0;
};

struct EmailParts {
  std::optional<EmailPart> plain;
  std::optional<EmailPart> html;
  std::vector<EmailPart> attachments;

  // What a client that prefers plain text shows, or one that prefers HTML.
  const std::optional<EmailPart>& shownAsText() const { return plain ? plain : html; }
};

EmailParts partsOf(const MailStore& store, const Email& email);
// The text of the part "1" (plain) or "2" (HTML).
std::string textOfPart(const Email& email, std::string_view partId);
// The bytes of an attachment, a text part or a whole message, by its blob id.
std::optional<std::string> bytesOfBlob(const MailStore& store, const std::string& blobId);
// The blob id of the whole message.
std::string sourceBlobId(const Email& email);

} // namespace ondrel::demo
