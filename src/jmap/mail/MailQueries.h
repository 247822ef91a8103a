#pragma once

#include "jmap/mail/AttachmentInfo.h"
#include "jmap/mail/MailListing.h"
#include "jmap/mail/MailboxCache.h"
#include "jmap/protocol/JMAPClient.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::jmap {

// A message of a thread: the server's id, which changes mailboxes, and the value of its Message-ID header,
// under which its highlights are kept; empty for a message without one.
struct ThreadEmailInfo {
  std::string internalId;
  std::string messageId;

  bool operator==(const ThreadEmailInfo&) const = default;
};

struct EmailInfo {
  std::string subject;
  std::string messageId;
};

struct MailboxAndThread {
  std::string mailboxName;
  std::string threadId;
};

struct HighlightExportInfo {
  std::string subject;
  std::string url; // of the message in the web application
};

// What became of a question for messages by Message-ID. Those that are in neither member aren't there.
struct HighlightExportAnswer {
  std::map<std::string, HighlightExportInfo> found;
  std::set<std::string> unanswered; // a request for them failed
};

// Everything that the program asks of the user's mail, one fixed JMAP request (RFC 8620, RFC 8621) each.
// Where nothing else is said an operation gives the error of the request, or badResponse after a log line
// when the answer has another shape than expected. Operations may run side by side. Main thread only.
class MailQueries {
 public:
  // Called when the number of unread messages may have changed.
  using BadgeRefresh = std::function<void()>;

  // All outlive it.
  MailQueries(JMAPClient& client, settings::AppSettings& settings, BadgeRefresh badgeRefresh);

  // A page of the emails with attachments, newest first, without what is embedded in their text.
  async::Task<Result<AttachmentPage>> fetchAttachments(std::int64_t position, std::int64_t limit);

  async::Task<Result<EmailInfo>> emailInfo(std::string emailId);
  // In the thread's order.
  async::Task<Result<std::vector<ThreadEmailInfo>>> threadEmails(std::string threadId);
  // Adds emails to a mailbox or takes them out of it. Logs what fails.
  async::Task<void> setMailboxMembership(std::vector<std::string> emailIds, std::string mailboxId, bool add);
  // The first mailbox of that name, letters' case aside.
  async::Task<Result<std::optional<std::string>>> findMailboxId(std::string name);
  // By the whole value of the Message-ID header.
  async::Task<Result<std::string>> findEmailId(std::string messageId);
  // Of several mailboxes any one.
  async::Task<Result<MailboxAndThread>> findMailboxNameAndThreadId(std::string emailId);
  // By Message-ID; a failed request leaves its messages unanswered. Tells meanwhile how many are done with.
  async::Task<Result<HighlightExportAnswer>>
  highlightExportInfo(std::vector<std::string> messageIds, std::function<void(std::size_t done)> progress);
  // Whether the account uses labels in place of folders.
  async::Task<Result<bool>> fetchInLabelsMode();

  async::Task<Result<std::int64_t>> inboxUnreadCount();
  // Mailbox ids are asked for once and kept in mailboxes().
  async::Task<Result<std::string>> fetchInboxMailboxId();
  async::Task<Result<std::string>> fetchTrashMailboxId();
  async::Task<Result<std::string>> fetchJunkMailboxId();
  // Moves it from the inbox to the trash, or from wherever else it is by now. Logs what fails.
  async::Task<void> deleteEmail(std::string emailId);

  // The address of a message in the web application.
  async::Task<Result<std::string>> messageURL(std::string emailId);
  async::Task<Result<std::string>> messageURLForMessageId(std::string messageId);

  // For readers outside the program, who are told what stands in the way: noMailAccount where there is none,
  // and nothing is logged.
  async::Task<Result<std::vector<EmailSummary>>> searchEmails(EmailSearch search); // newest first
  async::Task<Result<FullEmail>> fullEmail(std::string emailId);
  async::Task<Result<std::vector<MailboxSummary>>> listMailboxes();
  // See JMAPClient.
  async::Task<bool> isSignInShown() { return client_.isSignInShown(); }

  MailboxCache& mailboxes() { return *mailboxes_; }
  // For another account: operations that are under way keep what they find to themselves.
  void forgetMailboxes() { mailboxes_ = std::make_shared<MailboxCache>(); }

 private:
  JMAPClient& client_;
  settings::AppSettings& settings_;
  BadgeRefresh badgeRefresh_;
  std::shared_ptr<MailboxCache> mailboxes_ = std::make_shared<MailboxCache>();
};

} // namespace ondrel::jmap
