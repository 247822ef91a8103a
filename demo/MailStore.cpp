#include "demo/MailStore.h"

#include <algorithm>
#include <unordered_set>

namespace ondrel::demo {

namespace {

template <class Field>
const Mailbox* findMailbox(const std::vector<Mailbox>& mailboxes, Field field, std::string_view value) {
  const auto found = std::ranges::find(mailboxes, value, field);
  return found == mailboxes.end() ? nullptr : &*found;
}

} // namespace

const Email& MailStore::add(Email email) {
  auto& kept = emails_.emplace_back(std::move(email));
  emailById_[kept.id] = &kept;
  auto& thread = emailsByThread_[kept.threadId];
  changes_.record(DataType::thread, thread.empty() ? ChangeLog::Kind::created : ChangeLog::Kind::updated,
                  kept.threadId);
  thread.insert(std::ranges::upper_bound(thread, kept.receivedAt, {}, &Email::receivedAt), &kept);
  threadsByMailbox_.clear();
  changes_.record(DataType::email, ChangeLog::Kind::created, kept.id);
  recordMailboxes(kept.mailboxIds);
  notify();
  return kept;
}

template <class Change>
void MailStore::change(Email& email, Change change) {
  auto concerned = email.mailboxIds;
  change(email);
  concerned.insert(email.mailboxIds.begin(), email.mailboxIds.end());
  threadsByMailbox_.clear();
  changes_.record(DataType::email, ChangeLog::Kind::updated, email.id);
  recordMailboxes(concerned);
  notify();
}

void MailStore::markThreadRead(const std::string& threadId) {
  if (const auto found = emailsByThread_.find(threadId); found != emailsByThread_.end()) {
    for (auto* email : found->second)
      if (email->isUnread())
        change(*email, [](Email& e) { e.setUnread(false); });
  }
}

void MailStore::moveThread(const std::string& threadId, const std::string& mailboxId) {
  if (const auto found = emailsByThread_.find(threadId); found != emailsByThread_.end())
    for (auto* email : found->second)
      change(*email, [&](Email& e) { e.mailboxIds = {mailboxId}; });
}

void MailStore::setMailboxes(const std::string& emailId, std::set<std::string> mailboxIds) {
  change(*emailById_.at(emailId), [&](Email& e) { e.mailboxIds = std::move(mailboxIds); });
}

void MailStore::setKeywords(const std::string& emailId, std::set<std::string> keywords) {
  change(*emailById_.at(emailId), [&](Email& e) { e.keywords = std::move(keywords); });
}

void MailStore::destroy(const std::string& emailId) {
  auto* email = emailById_.at(emailId);
  auto& thread = emailsByThread_.at(email->threadId);
  std::erase(thread, email);
  changes_.record(DataType::thread, thread.empty() ? ChangeLog::Kind::destroyed : ChangeLog::Kind::updated,
                  email->threadId);
  if (thread.empty())
    emailsByThread_.erase(email->threadId);
  threadsByMailbox_.clear();
  changes_.record(DataType::email, ChangeLog::Kind::destroyed, emailId);
  recordMailboxes(email->mailboxIds);
  emailById_.erase(email->id);
  emails_.remove_if([&](const Email& other) { return &other == email; });
  notify();
}

void MailStore::forgetChanges() {
  changes_.forget();
  notify();
}

void MailStore::recordMailboxes(const std::set<std::string>& mailboxIds) {
  for (const auto& id : mailboxIds)
    changes_.record(DataType::mailbox, ChangeLog::Kind::updated, id);
}

void MailStore::notify() const {
  if (changed_)
    changed_();
}

const Mailbox* MailStore::mailboxById(std::string_view id) const {
  return findMailbox(mailboxes_, &Mailbox::id, id);
}

const Mailbox* MailStore::mailboxByName(std::string_view name) const {
  return findMailbox(mailboxes_, &Mailbox::name, name);
}

const Mailbox* MailStore::mailboxByRole(std::string_view role) const {
  return findMailbox(mailboxes_, &Mailbox::role, role);
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
  return found == emailsByThread_.end()
             ? std::vector<const Email*>()
             : std::vector<const Email*>(found->second.begin(), found->second.end());
}

const std::vector<const Email*>& MailStore::threadsIn(const std::string& mailboxId) const {
  const auto [entry, isNew] = threadsByMailbox_.try_emplace(mailboxId);
  if (isNew) {
    for (const auto& [id, emails] : emailsByThread_) {
      const auto inside = std::ranges::find_if(emails.rbegin(), emails.rend(),
                                               [&](const Email* email) { return email->isIn(mailboxId); });
      if (inside != emails.rend())
        entry->second.push_back(*inside);
    }
    std::ranges::sort(entry->second, [](const Email* a, const Email* b) {
      return a->receivedAt != b->receivedAt ? a->receivedAt > b->receivedAt : a->id > b->id;
    });
  }
  return entry->second;
}

MailStore::Counts MailStore::counts(const std::string& mailboxId) const {
  Counts counts;
  std::unordered_set<std::string_view> threads;
  std::unordered_set<std::string_view> unreadThreads;
  for (const auto& email : emails_) {
    if (!email.isIn(mailboxId))
      continue;
    ++counts.emails;
    threads.insert(email.threadId);
    if (email.isUnread()) {
      ++counts.unreadEmails;
      unreadThreads.insert(email.threadId);
    }
  }
  counts.threads = static_cast<unsigned>(threads.size());
  counts.unreadThreads = static_cast<unsigned>(unreadThreads.size());
  return counts;
}

} // namespace ondrel::demo
