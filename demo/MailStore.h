#pragma once

#include "demo/ChangeLog.h"
#include "demo/Mail.h"

#include <functional>
#include <list>
#include <map>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ondrel::demo {

// The mail of the one demonstration user, in memory, with a log of its changes. A pointer to an email that
// it gives out stays valid until that email is destroyed.
class MailStore {
 public:
  struct Counts {
    unsigned emails = 0;
    unsigned unreadEmails = 0;
    unsigned threads = 0;
    unsigned unreadThreads = 0;
  };

  void addMailbox(Mailbox mailbox) { mailboxes_.push_back(std::move(mailbox)); }
  void addBlob(Blob blob) { blobs_.insert_or_assign(blob.id, std::move(blob)); }
  const Email& add(Email email);
  // Ids that nothing has yet.
  std::string newThreadId() { return "T" + std::to_string(++lastThread_); }
  std::string newEmailId() { return "M" + std::to_string(++lastEmail_); }
  std::string newBlobId() { return "G" + std::to_string(40000 + ++lastBlob_); }

  void markThreadRead(const std::string& threadId);
  void moveThread(const std::string& threadId, const std::string& mailboxId);
  // For an email that is there. At least one mailbox.
  void setMailboxes(const std::string& emailId, std::set<std::string> mailboxIds);
  void setKeywords(const std::string& emailId, std::set<std::string> keywords);
  void destroy(const std::string& emailId);

  const ChangeLog& changes() const { return changes_; }
  void forgetChanges();
  // Called after each change.
  void onChange(std::function<void()> callback) { changed_ = std::move(callback); }

  const std::vector<Mailbox>& mailboxes() const { return mailboxes_; }
  const Mailbox* mailboxById(std::string_view id) const;
  const Mailbox* mailboxByName(std::string_view name) const;
  const Mailbox* mailboxByRole(std::string_view role) const;
  const std::list<Email>& emails() const { return emails_; }
  const Email* email(const std::string& id) const;
  const Blob* blob(const std::string& id) const;
  // Oldest first; empty for an unknown thread.
  std::vector<const Email*> thread(const std::string& threadId) const;
  // The newest message of each thread that has one in the mailbox, newest first.
  const std::vector<const Email*>& threadsIn(const std::string& mailboxId) const;
  Counts counts(const std::string& mailboxId) const;

 private:
  template <class Change>
  void change(Email& email, Change change);
  void recordMailboxes(const std::set<std::string>& mailboxIds);
  void notify() const;

  std::vector<Mailbox> mailboxes_;
  std::list<Email> emails_;
  std::unordered_map<std::string, Email*> emailById_;
  std::unordered_map<std::string, std::vector<Email*>> emailsByThread_;
  std::map<std::string, Blob> blobs_;
  mutable std::unordered_map<std::string, std::vector<const Email*>>
      threadsByMailbox_; // rebuilt when asked for
  ChangeLog changes_;
  std::function<void()> changed_;
  int lastThread_ = 0;
  int lastEmail_ = 0;
  int lastBlob_ = 0;
};

} // namespace ondrel::demo
