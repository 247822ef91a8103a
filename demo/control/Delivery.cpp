#include "demo/control/Delivery.h"

#include "base/JsonReader.h"
#include "demo/mail/SampleMail.h"

#include <boost/json.hpp>

namespace ondrel::demo::control {

namespace json = boost::json;

namespace {

bool isNull(const base::JsonReader& member) {
  return member.value() && !member.isGiven();
}

} // namespace

std::optional<json::object> deliver(mail::MailStore& store, const json::object& given) {
  const base::JsonReader order(given);
  const auto text = [&](const char* key, const char* otherwise) {
    return order[key].string().value_or(otherwise);
  };
  const auto* mailbox = store.mailbox(text("mailbox", "inbox"));
  const auto count = order["count"].wholeNumber().value_or(1);
  const auto threadId = text("threadId", "");
  if (!mailbox || count < 1 || count > 10'000 || (!threadId.empty() && store.thread(threadId).empty()))
    return std::nullopt;
  json::array emailIds;
  for (std::int64_t i = 0; i < count; ++i) {
    auto email = store.draft(threadId);
    if (!isNull(order["subject"]))
      email.subject = text("subject", "A new message");
    if (!isNull(order["from"]))
      email.from = {text("fromName", "Nadia Okafor"), text("fromEmail", "nadia.okafor@example.org")};
    email.to = {mail::demoUser()};
    email.receivedAt = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    email.mailboxIds = {mailbox->id};
    if (!order["unread"].boolean().value_or(true))
      email.markRead();
    email.html = "<p>" + mail::escapedHtml(text("text", "Delivered a moment ago.")) + "</p>";
    emailIds.emplace_back(store.add(std::move(email)).id);
  }
  const std::string last(emailIds.back().get_string());
  return json::object{
      {"emailId", last}, {"threadId", store.email(last)->threadId}, {"emailIds", std::move(emailIds)}};
}

} // namespace ondrel::demo::control
