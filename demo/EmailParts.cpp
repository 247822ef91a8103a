#include "demo/EmailParts.h"

namespace ondrel::demo {

namespace {

// Blob ids of what isn't stored as a blob: the message's id with one of these behind it.
constexpr std::string_view plainSuffix = "-p1";
constexpr std::string_view htmlSuffix = "-p2";
constexpr std::string_view sourceSuffix = "-raw";

EmailPart textPart(const Email& email, const char* partId, std::string_view suffix, const char* type) {
  EmailPart part;
  part.partId = partId;
  part.blobId = email.id + std::string(suffix);
  part.type = type;
  part.charset = "utf-8";
  part.size = textOfPart(email, partId).size();
  return part;
}

EmailPart attachmentPart(const Attachment& attachment, const Blob& blob, std::size_t number) {
  EmailPart part;
  part.partId = std::to_string(number);
  part.blobId = blob.id;
  part.name = blob.name;
  part.type = blob.type.substr(0, blob.type.find(';'));
  part.charset = part.type.starts_with("text/") ? "utf-8" : "";
  part.disposition = attachment.disposition;
  part.cid = attachment.cid;
  part.size = blob.bytes.size();
  return part;
}

} // namespace

EmailParts partsOf(const MailStore& store, const Email& email) {
  EmailParts parts;
  if (!email.html.empty()) {
    parts.html = textPart(email, "2", htmlSuffix, "text/html");
    if (email.kind == BodyKind::flow)
      parts.plain = textPart(email, "1", plainSuffix, "text/plain");
  }
  for (const auto& attachment : email.attachments)
    if (const auto* blob = store.blob(attachment.blobId))
      parts.attachments.push_back(attachmentPart(attachment, *blob, 3 + parts.attachments.size()));
  return parts;
}

std::string textOfPart(const Email& email, std::string_view partId) {
  return partId == "1" ? plainTextOf(email.html) : email.html;
}

std::optional<std::string> bytesOfBlob(const MailStore& store, const std::string& blobId) {
  if (const auto* blob = store.blob(blobId))
    return blob->bytes;
  const auto dash = blobId.rfind('-');
  const auto* email = dash == std::string::npos ? nullptr : store.email(blobId.substr(0, dash));
  if (!email)
    return std::nullopt;
  const auto suffix = std::string_view(blobId).substr(dash);
  if (suffix == sourceSuffix)
    return sourceOf(*email);
  const auto parts = partsOf(store, *email);
  if (suffix == plainSuffix && parts.plain)
    return textOfPart(*email, "1");
  if (suffix == htmlSuffix && parts.html)
    return textOfPart(*email, "2");
  return std::nullopt;
}

std::string sourceBlobId(const Email& email) {
  return email.id + std::string(sourceSuffix);
}

} // namespace ondrel::demo
