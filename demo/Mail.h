#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace ondrel::demo {

struct Address {
  std::string name;
  std::string email;
};

/// A file of the user-content host.
struct Blob {
  std::string id;
  std::string name;
  std::string type;
  std::string bytes;
};

/// How the web application shows a message body.
enum class BodyKind {
  Flow,        ///< as elements of the page itself
  ScriptFrame, ///< in a sandboxed frame of an origin of its own, where scripts may run
  StaticFrame, ///< in a sandboxed frame without scripts
};

struct Email {
  std::string id;
  std::string threadId;
  std::string messageId; // the header value, without angle brackets
  std::string subject;
  Address from;
  std::vector<Address> to;
  std::chrono::sys_seconds receivedAt;
  std::string mailboxId;
  bool unread = false;
  BodyKind kind = BodyKind::Flow;
  std::string html;
  std::vector<std::string> blobIds; // of its attachments
};

struct Mailbox {
  std::string id;
  std::string name;
  std::string role; // as in RFC 8621; empty for a folder of the user's own
};

/// "2025-11-20T09:41:00Z".
std::string isoTime(std::chrono::sys_seconds time);
/// "Thu, 20 Nov 2025 09:41:00 +0000", as in a mail header.
std::string mailTime(std::chrono::sys_seconds time);
/// The HTML without its tags, runs of white space made one blank, cut at `limit` bytes of whole characters.
std::string previewOf(const std::string& html, std::size_t limit);
std::string escapeHtml(std::string_view text);
/// The whole message as it would travel: headers, the HTML body, the attachments' names.
std::string sourceOf(const Email& email);

} // namespace ondrel::demo
