#include "demo/web/DataSurface.h"

#include "base/JsonReader.h"
#include "base/Text.h"
#include "demo/mail/SampleMail.h"
#include "platform/linux/glib/Ref.h"

#include <boost/json.hpp>

#include <algorithm>

namespace ondrel::demo::web {

namespace json = boost::json;

namespace {

// One request of a signed-in page.
struct Asked {
  http::Exchange& exchange;
  mail::MailStore& store;
  http::SignIn& signIn;

  std::string query(std::string_view name) const { return exchange.query(name).value_or(""); }
  std::string field(std::string_view name) const {
    const auto body = exchange.jsonBody();
    return base::JsonReader(body)[name].string().value_or("");
  }
  std::size_t number(std::string_view name, std::size_t otherwise) const {
    const auto number = base::parsedInteger(query(name));
    return number && *number >= 0 ? static_cast<std::size_t>(*number) : otherwise;
  }
};

// None when there is no such thing, or the request makes no sense.
using Answer = std::optional<json::value>;

json::object jsonOf(const mail::Address& address) {
  return {{"name", address.name}, {"email", address.email}};
}

json::object rowOf(const mail::MailStore& store, const mail::Email& email) {
  const auto thread = store.thread(email.threadId);
  return {{"threadId", email.threadId},
          {"emailId", email.id},
          {"from", jsonOf(email.from)},
          {"subject", email.subject.value_or("")},
          {"preview", mail::previewOf(email.html, 140)},
          {"receivedAt", mail::isoTime(email.receivedAt)},
          {"isUnread", std::ranges::any_of(thread, &mail::Email::isUnread)},
          {"messageCount", thread.size()},
          {"hasAttachment", std::ranges::any_of(thread, &mail::Email::hasAttachment)}};
}

json::object messageOf(const mail::MailStore& store, const mail::Email& email) {
  constexpr const char* kinds[] = {"flow", "scriptFrame", "staticFrame", "ownFrame", "late", "folded"};
  json::array to;
  for (const auto& address : email.to)
    to.push_back(jsonOf(address));
  json::array attachments;
  for (const auto& attachment : email.attachments)
    if (const auto* blob = store.blob(attachment.blobId))
      attachments.push_back(
          {{"blobId", blob->id}, {"name", blob->name}, {"type", blob->type}, {"size", blob->size()}});
  return {{"id", email.id},
          {"threadId", email.threadId},
          {"subject", email.subject.value_or("")},
          {"from", jsonOf(email.from)},
          {"to", std::move(to)},
          {"receivedAt", mail::isoTime(email.receivedAt)},
          {"isUnread", email.isUnread()},
          {"kind", kinds[static_cast<int>(email.kind)]},
          {"html", email.kind == mail::BodyKind::late ? "" : email.html},
          {"preview", mail::previewOf(email.html, 140)},
          {"attachments", std::move(attachments)}};
}

Answer mailboxes(const Asked& asked) {
  json::array list;
  for (const auto& mailbox : asked.store.mailboxes()) {
    const auto counts = asked.store.counts(mailbox.id);
    list.push_back({{"id", mailbox.id},
                    {"name", mailbox.name},
                    {"role", mailbox.role},
                    {"total", counts.threads},
                    {"unread", counts.unreadThreads}});
  }
  return list;
}

Answer list(const Asked& asked) {
  constexpr std::size_t mostRows = 200;
  const auto* mailbox = asked.store.mailbox(asked.query("mailbox"));
  if (!mailbox)
    return std::nullopt;
  const auto& threads = asked.store.threadsIn(mailbox->id);
  const auto position = std::min(asked.number("position", 0), threads.size());
  const auto count = std::min({asked.number("limit", mostRows), mostRows, threads.size() - position});
  json::array rows;
  for (std::size_t i = position; i < position + count; ++i)
    rows.push_back(rowOf(asked.store, *threads[i]));
  return json::object{{"position", position}, {"total", threads.size()}, {"rows", std::move(rows)}};
}

// By its id or that of a message. Its index is the row that it has in a mailbox.
Answer thread(const Asked& asked) {
  const auto id = asked.query("id");
  const auto* named = asked.store.email(id);
  const auto thread = asked.store.thread(named ? named->threadId : id);
  if (thread.empty())
    return std::nullopt;
  json::array messages;
  for (const auto* email : thread)
    messages.push_back(messageOf(asked.store, *email));
  json::value index;
  if (const auto* mailbox = asked.store.mailbox(asked.query("mailbox"))) {
    const auto& rows = asked.store.threadsIn(mailbox->id);
    const auto row = std::ranges::find(rows, thread.front()->threadId, &mail::Email::threadId);
    if (row != rows.end())
      index = row - rows.begin();
  }
  return json::object{
      {"threadId", thread.front()->threadId}, {"messages", std::move(messages)}, {"index", std::move(index)}};
}

Answer body(const Asked& asked) {
  const auto* email = asked.store.email(asked.exchange.pathBelow("/data/body/"));
  return email ? Answer(json::object{{"html", email->html}}) : std::nullopt;
}

Answer read(const Asked& asked) {
  asked.store.markThreadRead(asked.field("threadId"));
  return json::object();
}

Answer move(const Asked& asked) {
  const auto* target = asked.store.mailbox(asked.field("role"));
  if (!target)
    return std::nullopt;
  asked.store.moveThread(asked.field("threadId"), target->id);
  return json::object();
}

Answer send(const Asked& asked) {
  const auto content = asked.exchange.jsonBody();
  const base::JsonReader body(content);
  const auto to = body["to"].strings();
  if (to.empty())
    return std::nullopt;
  auto email = asked.store.draft();
  for (const auto& address : to)
    email.to.push_back({"", address});
  email.subject = body["subject"].string().value_or("");
  email.html = body["html"].string().value_or("");
  email.from = mail::demoUser();
  for (const auto& id : body["blobIds"].strings())
    if (asked.store.blob(id))
      email.attachments.push_back({id});
  email.receivedAt = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  email.mailboxIds = {"sent"};
  email.markRead();
  const auto& sent = asked.store.add(std::move(email));
  return json::object{{"emailId", sent.id}, {"threadId", sent.threadId}};
}

Answer token(const Asked& asked) {
  return json::object{{"accessToken", asked.signIn.token()}};
}

Answer upload(const Asked& asked) {
  // Never the type that the page names: a shared file is shown as nothing but bytes.
  const auto& blob = asked.store.addBlob({"", asked.exchange.query("name").value_or("file"),
                                          "application/octet-stream", std::string(asked.exchange.body())});
  return json::object{{"blobId", blob.id}, {"size", blob.bytes.size()}};
}

Answer share(const Asked& asked) {
  const auto* blob = asked.store.blob(asked.field("blobId"));
  if (!blob)
    return std::nullopt;
  const glib::CString name(g_uri_escape_string(blob->name.c_str(), nullptr, FALSE));
  return json::object{{"path", "/blob/" + blob->id + "/" + name.get()}};
}

} // namespace

void addData(http::Router& router, mail::MailStore& store, http::SignIn& signIn) {
  constexpr struct {
    const char* method;
    const char* path;
    Answer (*answer)(const Asked&);
  } rows[] = {
      {"GET", "/data/mailboxes", mailboxes}, {"GET", "/data/list", list},   {"GET", "/data/thread", thread},
      {"GET", "/data/body/", body},          {"POST", "/data/read", read},  {"POST", "/data/move", move},
      {"POST", "/data/send", send},          {"GET", "/data/token", token}, {"POST", "/data/upload", upload},
      {"POST", "/data/share", share},
  };
  for (const auto& [method, path, answer] : rows)
    router.add(http::Site::web, method, path, [&store, &signIn, answer](http::Exchange& exchange) {
      if (!signIn.isSignedIn(exchange))
        exchange.refuse(SOUP_STATUS_UNAUTHORIZED, "Not signed in.");
      else if (const auto found = answer({exchange, store, signIn}))
        exchange.replyJson(*found);
      else
        exchange.refuse(exchange.method() == "POST" ? SOUP_STATUS_BAD_REQUEST : SOUP_STATUS_NOT_FOUND,
                        "No such thing.");
    });
}

} // namespace ondrel::demo::web
