#include "demo/Delivery.h"

#include "demo/OrderFields.h"
#include "demo/SampleMail.h"

#include <array>
#include <fmt/core.h>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

const Mailbox* mailboxCalled(const MailStore& store, std::string_view name) {
  for (const auto& mailbox : store.mailboxes())
    if (mailbox.id == name || mailbox.name == name || (!name.empty() && mailbox.role == name))
      return &mailbox;
  return nullptr;
}

// One mailbox or several, each by its id, name or role. Empty when one of them is unknown.
std::set<std::string> mailboxesOf(const MailStore& store, const json::object& order) {
  const auto* value = order.if_contains("mailbox");
  if (!value)
    return {"inbox"};
  const auto names = value->is_array() ? value->get_array() : json::array(1, *value);
  std::set<std::string> ids;
  for (const auto& name : names) {
    const auto* mailbox = name.is_string() ? mailboxCalled(store, name.get_string()) : nullptr;
    if (!mailbox)
      return {};
    ids.insert(mailbox->id);
  }
  return ids;
}

std::vector<Attachment> attachmentsOf(MailStore& store, std::int64_t count) {
  constexpr std::array files{"notes.txt", "plan.pdf", "garden.png"};
  std::vector<Attachment> attachments;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    const std::string file = files[i % files.size()];
    attachments.push_back(attachSample(store, file, fmt::format("Delivered {} {}", i + 1, file)));
  }
  return attachments;
}

} // namespace

std::expected<json::object, std::string> deliver(MailStore& store, const json::object& order) {
  using std::chrono::seconds;
  const auto mailboxIds = mailboxesOf(store, order);
  const auto count = numberOr(order, "count", 1);
  const auto attachments = numberOr(order, "attachments", 0);
  const auto time = order.contains("receivedAt")
                        ? timeOf(textOr(order, "receivedAt", ""))
                        : std::chrono::floor<seconds>(std::chrono::system_clock::now());
  if (mailboxIds.empty() || count < 1 || count > 10'000 || attachments < 0 || attachments > 100 || !time)
    return std::unexpected("An unknown mailbox, or a count, number of attachments or time out of range.");
  json::array emailIds;
  std::string threadId;
  for (std::int64_t i = 0; i < count; ++i) {
    Email email;
    email.id = store.newEmailId();
    email.threadId = textOr(order, "threadId", "");
    if (store.thread(email.threadId).empty())
      email.threadId = store.newThreadId();
    email.messageId =
        isNull(order, "messageId") ? "" : textOr(order, "messageId", email.id + "@mail.example.org");
    if (!isNull(order, "subject"))
      email.subject = textOr(order, "subject", "A new message");
    if (!isNull(order, "from")) {
      email.from = {textOr(order, "fromName", "Nadia Okafor"),
                    textOr(order, "fromEmail", "nadia.okafor@example.org")};
    }
    email.to = {demoUser()};
    email.receivedAt = *time;
    email.mailboxIds = mailboxIds;
    email.setUnread(flagOr(order, "unread", true));
    email.html = "<p>" + escapeHtml(textOr(order, "text", "Delivered a moment ago.")) + "</p>";
    email.attachments = attachmentsOf(store, attachments);
    const auto& delivered = store.add(std::move(email));
    emailIds.emplace_back(delivered.id);
    threadId = delivered.threadId;
  }
  return json::object{{"emailId", emailIds.back()}, {"threadId", threadId}, {"emailIds", emailIds}};
}

} // namespace ondrel::demo
