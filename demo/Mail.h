#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ondrel::demo {

struct Address {
  std::string name;
  std::string email;
};

// A file of the user-content host.
struct Blob {
  std::string id;
  std::string name;
  std::string type;
  std::string bytes;
};

// A file of a message. One with a `cid` is shown inside the body.
struct Attachment {
  std::string blobId;
  std::string disposition = "attachment"; // empty: the message doesn't say
  std::string cid = {};
};

// How the web application shows a message body.
enum class BodyKind {
  flow,        // as elements of the page itself
  scriptFrame, // in a sandboxed frame of an origin of its own, where scripts may run
  staticFrame, // in a sandboxed frame without scripts
  ownFrame,    // in a frame of the web application's origin: a page of its own
  late,        // as elements of the page itself that come some time after it
};

struct Email {
  std::string id;
  std::string threadId;
  std::string messageId; // the header value, without angle brackets; empty when it has none
  std::optional<std::string> subject;
  Address from; // all empty when it has none
  std::vector<Address> to;
  std::chrono::sys_seconds receivedAt;
  std::set<std::string> mailboxIds; // never empty
  std::set<std::string> keywords;   // as in RFC 8621
  BodyKind kind = BodyKind::flow;
  std::string html; // empty for a message without any text
  std::vector<Attachment> attachments;

  bool isIn(const std::string& mailboxId) const { return mailboxIds.contains(mailboxId); }
  bool isUnread() const { return !keywords.contains("$seen"); }
  void setUnread(bool unread);
  // Whether it has a file that its body doesn't show.
  bool hasAttachment() const;
};

struct Mailbox {
  std::string id;
  std::string name;
  std::string role; // as in RFC 8621; empty for a folder of the user's own
};

// "2025-11-20T09:41:00Z".
std::string isoTime(std::chrono::sys_seconds time);
// The UTCDate of RFC 8620, with or without a fraction; none for anything else.
std::optional<std::chrono::sys_seconds> timeOf(std::string_view text);
// "Thu, 20 Nov 2025 09:41:00 +0000", as in a mail header.
std::string mailTime(std::chrono::sys_seconds time);
// The HTML without its tags, runs of white space made one blank, cut at `limit` bytes of whole characters.
std::string previewOf(const std::string& html, std::size_t limit);
// The text of an HTML body, a line for each paragraph.
std::string plainTextOf(const std::string& html);
std::string escapeHtml(std::string_view text);
// The header fields in order, name and value.
std::vector<std::pair<std::string, std::string>> headersOf(const Email& email);
// The whole message as it would travel: headers, the HTML body, the attachments' names.
std::string sourceOf(const Email& email);

} // namespace ondrel::demo
