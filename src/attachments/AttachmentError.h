#pragma once

#include <expected>
#include <string>

namespace ondrel::attachments {

// Why an attachment can't be had. description() is for people and the log.
struct AttachmentError {
  enum class Kind {
    httpError,         // of that status; 0 for an answer that is none of HTTP
    noDownloadsFolder, // the desktop names none
    linkNotFound,
    invalidResponse,
    notSignedIn,
    told, // by whoever failed, in detail
    cancelled,
  };

  Kind kind = Kind::invalidResponse;
  int status = 0;
  std::string detail = {};

  std::string description() const;
  bool operator==(const AttachmentError&) const = default;

  static AttachmentError httpError(int status) { return {Kind::httpError, status, {}}; }
  static AttachmentError told(std::string text) { return {Kind::told, 0, std::move(text)}; }
};

template <class T>
using Result = std::expected<T, AttachmentError>;

} // namespace ondrel::attachments
