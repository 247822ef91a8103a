#pragma once

#include "base/Event.h"
#include "demo/mail/ChangeLog.h"
#include "demo/mail/Mail.h"

#include <deque>
#include <map>
#include <string_view>
#include <unordered_map>

namespace ondrel::demo::mail {

// The mail of the one demonstration user, in memory, with a log of its changes. The pointers that it gives
// out stay valid.
class MailStore {
 public:
  struct Counts {
    std::size_t emails = 0;
    std::size_t unreadEmails = 0;
    std::size_t threads = 0;
    std::size_t unreadThreads = 0;
  };

  void addMailbox(Mailbox mailbox) { mailboxes_.push_back(std::move(mailbox)); }
  // The id is given by the store.
  const Blob& addBlob(Blob blob);
  // An email with an id and a Message-ID that no other has, in a new thread unless one is named. Not in the
  // store yet.
  Email draft(std::string threadId = {});
  const Email& add(Email email);
  std::string newThreadId() { return "T" + std::to_string(++lastThread_); }

  // For an email that is there. At least one mailbox.
  void update(const std::string& emailId, std::set<std::string> mailboxIds, std::set<std::string> keywords);
  void markThreadRead(const std::string& threadId);
  void moveThread(const std::string& threadId, const std::string& mailboxId);

  const ChangeLog& changes() const { return changes_; }
  void forgetChanges();
  base::Event<> changed;

  const std::vector<Mailbox>& mailboxes() const { return mailboxes_; }
  // By its id, name or role.
  const Mailbox* mailbox(std::string_view name) const;
  const std::deque<Email>& emails() const { return emails_; }
  const Email* email(const std::string& id) const;
  const Blob* blob(const std::string& id) const;
  // Oldest first; empty for an unknown thread.
  std::vector<const Email*> thread(const std::string& threadId) const;
  // The newest message of each thread that has one in the mailbox, newest first.
  const std::vector<const Email*>& threadsIn(const std::string& mailboxId) const;
  Counts counts(const std::string& mailboxId) const;

 private:
  std::vector<Mailbox> mailboxes_;
  std::deque<Email> emails_;
  std::unordered_map<std::string, Email*> emailById_;
  std::unordered_map<std::string, std::vector<const Email*>> emailsByThread_;
  std::map<std::string, Blob> blobs_;
  // Made when asked for.
  mutable std::unordered_map<std::string, std::vector<const Email*>> threadsByMailbox_;
  ChangeLog changes_;
  int lastThread_ = 0;
  int lastEmail_ = 0;
  int lastBlob_ = 40000;
};

} // namespace ondrel::demo::mail
