#include "demo/mail/MailStore.h"

#include <algorithm>
#include <unordered_set>

namespace ondrel::demo::mail {

const Blob& MailStore::addBlob(Blob blob) {
  blob.id = "G" + std::to_string(++lastBlob_);
  return blobs_[blob.id] = std::move(blob);
}

Email MailStore::draft(std::string threadId) {
  Email email;
  email.id = "M" + std::to_string(++lastEmail_);
  email.threadId = threadId.empty() ? newThreadId() : std::move(threadId);
  email.messageId = email.id + "@mail.example.org";
  return email;
}

const Email& MailStore::add(Email email) {
  auto& kept = emails_.emplace_back(std::move(email));
  emailById_[kept.id] = &kept;
  auto& thread = emailsByThread_[kept.threadId];
  thread.insert(std::ranges::upper_bound(thread, kept.receivedAt, {}, &Email::receivedAt), &kept);
  threadsByMailbox_.clear();
  changes_.record(DataType::email, kept.id, true);
  for (const auto& id : kept.mailboxIds)
    changes_.record(DataType::mailbox, id);
  changed.emit();
  return kept;
}

void MailStore::update(const std::string& emailId, std::set<std::string> mailboxIds,
                       std::set<std::string> keywords) {
  auto& email = *emailById_.at(emailId);
  if (email.mailboxIds == mailboxIds && email.keywords == keywords)
    return;
  auto concerned = email.mailboxIds;
  concerned.insert(mailboxIds.begin(), mailboxIds.end());
  email.mailboxIds = std::move(mailboxIds);
  email.keywords = std::move(keywords);
  threadsByMailbox_.clear();
  changes_.record(DataType::email, emailId);
  for (const auto& id : concerned)
    changes_.record(DataType::mailbox, id);
  changed.emit();
}

void MailStore::markThreadRead(const std::string& threadId) {
  for (auto email : thread(threadId)) {
    auto keywords = email->keywords;
    keywords.insert("$seen");
    update(email->id, email->mailboxIds, std::move(keywords));
  }
}

void MailStore::moveThread(const std::string& threadId, const std::string& mailboxId) {
  for (const auto* email : thread(threadId))
    update(email->id, {mailboxId}, email->keywords);
}

void MailStore::forgetChanges() {
  changes_.forget();
  changed.emit();
}

const Mailbox* MailStore::mailbox(std::string_view name) const {
  const auto found = std::ranges::find_if(mailboxes_, [&](const Mailbox& each) {
    return !name.empty() && (each.id == name || each.name == name || each.role == name);
  });
  return found == mailboxes_.end() ? nullptr : &*found;
}

const Email* MailStore::email(const std::string& id) const {
  const auto found = emailById_.find(id);
  return found == emailById_.end() ? nullptr : found->second;
}

const Blob* MailStore::blob(const std::string& id) const {
  const auto found = blobs_.find(id);
  return found == blobs_.end() ? nullptr : &found->second;
}

std::vector<const Email*> MailStore::thread(const std::string& threadId) const {
  const auto found = emailsByThread_.find(threadId);
  return found == emailsByThread_.end() ? std::vector<const Email*>() : found->second;
}

const std::vector<const Email*>& MailStore::threadsIn(const std::string& mailboxId) const {
  const auto [entry, isNew] = threadsByMailbox_.try_emplace(mailboxId);
  auto& rows = entry->second;
  if (isNew) {
    for (const auto& [id, emails] : emailsByThread_) {
      const auto inside = std::ranges::find_if(
          emails.rbegin(), emails.rend(), [&](const auto* e) { return e->mailboxIds.contains(mailboxId); });
      if (inside != emails.rend())
        rows.push_back(*inside);
    }
    std::ranges::sort(rows, std::greater{}, [](const Email* email) {
      return std::pair(email->receivedAt, std::string_view(email->id));
    });
  }
  return rows;
}

MailStore::Counts MailStore::counts(const std::string& mailboxId) const {
  Counts counts;
  std::unordered_set<std::string_view> threads;
  std::unordered_set<std::string_view> unreadThreads;
  for (const auto& email : emails_) {
    if (!email.mailboxIds.contains(mailboxId))
      continue;
    ++counts.emails;
    threads.insert(email.threadId);
    if (email.isUnread()) {
      ++counts.unreadEmails;
      unreadThreads.insert(email.threadId);
    }
  }
  counts.threads = threads.size();
  counts.unreadThreads = unreadThreads.size();
  return counts;
}

} // namespace ondrel::demo::mail
