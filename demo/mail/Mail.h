#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::demo::mail {

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
  std::size_t generated = 0;          // so many bytes are made while they are sent, in place of `bytes`
  std::chrono::milliseconds pause{0}; // between the forty pieces in which it is sent

  std::size_t size() const { return generated > 0 ? generated : bytes.size(); }
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
  folded,      // as elements of the page itself, when its header is clicked and not before
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

  bool isUnread() const { return !keywords.contains("$seen"); }
  void markRead() { keywords.insert("$seen"); }
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
// The UTCDate of RFC 8620; none for anything else.
std::optional<std::chrono::sys_seconds> timeOf(const std::string& text);
// "Thu, 20 Nov 2025 09:41:00 +0000", as in a mail header.
std::string mailTime(std::chrono::sys_seconds time);
std::string escapedHtml(const std::string& text);
// The text of an HTML body, a line for each paragraph.
std::string plainTextOf(const std::string& html);
// The same in one line, cut at `limit` bytes of whole characters.
std::string previewOf(const std::string& html, std::size_t limit);
// The message as it would travel: headers and the HTML body.
std::string sourceOf(const Email& email);

} // namespace ondrel::demo::mail
