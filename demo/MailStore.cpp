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
  thread.insert(std::ranges::upper_bound(thread, kept.receivedAt, {}, &Email::receivedAt), &kept);
  threadsByMailbox_.clear();
  return kept;
}

void MailStore::markThreadRead(const std::string& threadId) {
  if (const auto found = emailsByThread_.find(threadId); found != emailsByThread_.end()) {
    std::ranges::for_each(found->second, [](Email* email) { email->unread = false; });
  }
}

void MailStore::moveThread(const std::string& threadId, const std::string& mailboxId) {
  if (const auto found = emailsByThread_.find(threadId); found != emailsByThread_.end()) {
    std::ranges::for_each(found->second, [&](Email* email) { email->mailboxId = mailboxId; });
    threadsByMailbox_.clear();
  }
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
      const auto inside = std::ranges::find(emails.rbegin(), emails.rend(), mailboxId, &Email::mailboxId);
      if (inside != emails.rend()) {
        entry->second.push_back(*inside);
      }
    }
    std::ranges::sort(entry->second, [](const Email* a, const Email* b) {
      return a->receivedAt != b->receivedAt ? a->receivedAt > b->receivedAt : a->id > b->id;
    });
  }
  return entry->second;
}

MailStore::Counts MailStore::counts(const std::string& mailboxId) const {
  Counts counts;
  std::unordered_set<std::string_view> unreadThreads;
  for (const auto& email : emails_) {
    if (email.mailboxId == mailboxId && email.unread) {
      unreadThreads.insert(email.threadId);
    }
  }
  counts.total = static_cast<unsigned>(threadsIn(mailboxId).size());
  counts.unread = static_cast<unsigned>(unreadThreads.size());
  return counts;
}

} // namespace ondrel::demo
