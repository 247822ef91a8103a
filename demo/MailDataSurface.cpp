#include "demo/MailDataSurface.h"

#include "demo/SampleMail.h"

#include <boost/json.hpp>

#include <algorithm>
#include <charconv>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

constexpr std::size_t mostRows = 200;

std::size_t numberOr(const std::optional<std::string>& text, std::size_t otherwise) {
  std::size_t number = otherwise;
  if (text)
    std::from_chars(text->data(), text->data() + text->size(), number);
  return number;
}

std::string textOf(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

json::object jsonOf(const Address& address) {
  return {{"name", address.name}, {"email", address.email}};
}

json::array jsonOf(const std::vector<Address>& addresses) {
  json::array array;
  for (const auto& address : addresses)
    array.push_back(jsonOf(address));
  return array;
}

json::object rowOf(const MailStore& store, const Email& email) {
  const auto thread = store.thread(email.threadId);
  return {{"threadId", email.threadId},
          {"emailId", email.id},
          {"from", jsonOf(email.from)},
          {"subject", email.subject.value_or("")},
          {"preview", previewOf(email.html, 140)},
          {"receivedAt", isoTime(email.receivedAt)},
          {"isUnread", std::ranges::any_of(thread, &Email::isUnread)},
          {"messageCount", thread.size()},
          {"hasAttachment", std::ranges::any_of(thread, &Email::hasAttachment)}};
}

json::object messageOf(const MailStore& store, const Email& email) {
  constexpr const char* kinds[] = {"flow", "scriptFrame", "staticFrame", "ownFrame", "late"};
  json::array attachments;
  for (const auto& attachment : email.attachments) {
    if (const auto* blob = store.blob(attachment.blobId)) {
      attachments.push_back(
          {{"blobId", blob->id}, {"name", blob->name}, {"type", blob->type}, {"size", blob->bytes.size()}});
    }
  }
  return {{"id", email.id},
          {"threadId", email.threadId},
          {"subject", email.subject.value_or("")},
          {"from", jsonOf(email.from)},
          {"to", jsonOf(email.to)},
          {"receivedAt", isoTime(email.receivedAt)},
          {"isUnread", email.isUnread()},
          {"kind", kinds[static_cast<int>(email.kind)]},
          {"html", email.kind == BodyKind::late ? "" : email.html},
          {"preview", previewOf(email.html, 140)},
          {"attachments", std::move(attachments)}};
}

} // namespace

void MailDataSurface::addTo(Router& router) {
  add(router, "GET", "/data/mailboxes", &MailDataSurface::mailboxes);
  add(router, "GET", "/data/list", &MailDataSurface::list);
  add(router, "GET", "/data/thread", &MailDataSurface::thread);
  add(router, "GET", "/data/body/", &MailDataSurface::body);
  add(router, "POST", "/data/read", &MailDataSurface::read);
  add(router, "POST", "/data/move", &MailDataSurface::move);
  add(router, "POST", "/data/send", &MailDataSurface::send);
  add(router, "GET", "/data/token", &MailDataSurface::token);
}

void MailDataSurface::add(Router& router, const char* method, const char* path,
                          void (MailDataSurface::*answer)(Exchange&)) {
  router.add(Site::web, path, [this, method, answer](Exchange& exchange) {
    if (!signIn_.isSignedIn(exchange))
      exchange.refuse(SOUP_STATUS_UNAUTHORIZED, "Not signed in.");
    else if (exchange.method() != method)
      exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Not that way.");
    else
      (this->*answer)(exchange);
  });
}

void MailDataSurface::mailboxes(Exchange& exchange) {
  json::array list;
  for (const auto& mailbox : store_.mailboxes()) {
    const auto counts = store_.counts(mailbox.id);
    list.push_back({{"id", mailbox.id},
                    {"name", mailbox.name},
                    {"role", mailbox.role},
                    {"total", counts.threads},
                    {"unread", counts.unreadThreads}});
  }
  exchange.replyJson(list);
}

void MailDataSurface::list(Exchange& exchange) {
  const auto* mailbox = store_.mailboxByName(exchange.query("mailbox").value_or(""));
  if (!mailbox) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such mailbox.");
    return;
  }
  const auto& threads = store_.threadsIn(mailbox->id);
  const auto position = std::min(numberOr(exchange.query("position"), 0), threads.size());
  const auto count =
      std::min({numberOr(exchange.query("limit"), mostRows), mostRows, threads.size() - position});
  json::array rows;
  for (std::size_t i = position; i < position + count; ++i)
    rows.push_back(rowOf(store_, *threads[i]));
  exchange.replyJson(
      json::object{{"position", position}, {"total", threads.size()}, {"rows", std::move(rows)}});
}

void MailDataSurface::thread(Exchange& exchange) {
  const auto id = exchange.query("id").value_or("");
  const auto* named = store_.email(id);
  const auto thread = store_.thread(named ? named->threadId : id);
  if (thread.empty()) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such thread.");
    return;
  }
  json::array messages;
  for (const auto* email : thread)
    messages.push_back(messageOf(store_, *email));
  json::object answer{
      {"threadId", thread.front()->threadId}, {"messages", std::move(messages)}, {"index", nullptr}};
  if (const auto* mailbox = store_.mailboxByName(exchange.query("mailbox").value_or(""))) {
    const auto& rows = store_.threadsIn(mailbox->id);
    const auto row = std::ranges::find(rows, thread.front()->threadId, &Email::threadId);
    if (row != rows.end())
      answer["index"] = row - rows.begin();
  }
  exchange.replyJson(answer);
}

void MailDataSurface::body(Exchange& exchange) {
  if (const auto* email = store_.email(exchange.path().substr(std::string_view("/data/body/").size())))
    exchange.replyJson(json::object{{"html", email->html}});
  else
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such message.");
}

void MailDataSurface::read(Exchange& exchange) {
  store_.markThreadRead(textOf(exchange.jsonBody().value_or(json::object()), "threadId"));
  exchange.replyJson(json::object());
}

void MailDataSurface::move(Exchange& exchange) {
  const auto body = exchange.jsonBody().value_or(json::object());
  const auto* target = store_.mailboxByRole(textOf(body, "role"));
  if (!target) {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "No mailbox has that role.");
    return;
  }
  store_.moveThread(textOf(body, "threadId"), target->id);
  exchange.replyJson(json::object());
}

void MailDataSurface::send(Exchange& exchange) {
  const auto body = exchange.jsonBody().value_or(json::object());
  Email email;
  if (const auto* to = body.if_contains("to"); to && to->is_array()) {
    for (const auto& address : to->get_array())
      if (address.is_string())
        email.to.push_back({"", std::string(address.get_string())});
  }
  if (email.to.empty()) {
    exchange.refuse(SOUP_STATUS_BAD_REQUEST, "A message needs a recipient.");
    return;
  }
  email.id = store_.newEmailId();
  email.threadId = store_.newThreadId();
  email.messageId = email.id + "@demo.example";
  email.subject = textOf(body, "subject");
  email.html = textOf(body, "html");
  email.from = demoUser();
  if (const auto* ids = body.if_contains("blobIds"); ids && ids->is_array()) {
    for (const auto& id : ids->get_array())
      if (id.is_string() && store_.blob(std::string(id.get_string())))
        email.attachments.push_back({std::string(id.get_string())});
  }
  email.receivedAt = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  email.mailboxIds = {"sent"};
  email.setUnread(false);
  const auto& sent = store_.add(std::move(email));
  exchange.replyJson(json::object{{"emailId", sent.id}, {"threadId", sent.threadId}});
}

void MailDataSurface::token(Exchange& exchange) {
  exchange.replyJson(json::object{{"accessToken", tokens_.current()}});
}

} // namespace ondrel::demo
