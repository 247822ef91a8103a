#include "demo/jmap/EmailJson.h"

#include <boost/json.hpp>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

json::value textOrNull(const std::string& text) {
  return text.empty() ? json::value(nullptr) : json::value(text);
}

json::object flags(const std::set<std::string>& names) {
  json::object object;
  for (const auto& name : names)
    object[name] = true;
  return object;
}

json::value addresses(const std::vector<mail::Address>& addresses) {
  json::array list;
  for (const auto& [name, email] : addresses)
    if (!name.empty() || !email.empty())
      list.push_back({{"name", textOrNull(name)}, {"email", email}});
  return list.empty() ? json::value(nullptr) : json::value(std::move(list));
}

json::array attachments(const mail::MailStore& store, const mail::Email& email) {
  json::array list;
  for (const auto& [blobId, disposition, cid] : email.attachments)
    if (const auto* blob = store.blob(blobId)) {
      const auto type = blob->type.substr(0, blob->type.find(';'));
      list.push_back({{"partId", std::to_string(3 + list.size())},
                      {"blobId", blobId},
                      {"size", blob->size()},
                      {"name", textOrNull(blob->name)},
                      {"type", type},
                      {"charset", type.starts_with("text/") ? json::value("utf-8") : json::value(nullptr)},
                      {"disposition", textOrNull(disposition)},
                      {"cid", textOrNull(cid)}});
    }
  return list;
}

} // namespace

std::set<std::string> emailProperties() {
  return {"id",      "threadId",   "mailboxIds", "keywords",      "messageId", "from",       "to",
          "subject", "receivedAt", "preview",    "hasAttachment", "textBody",  "bodyValues", "attachments"};
}

json::object emailJson(const mail::MailStore& store, const mail::Email& email, bool withText) {
  json::array textBody;
  json::object bodyValues;
  if (!email.html.empty()) {
    const bool isPlain = email.kind == mail::BodyKind::flow || email.kind == mail::BodyKind::folded;
    const auto text = isPlain ? mail::plainTextOf(email.html) : email.html;
    const auto* partId = isPlain ? "1" : "2";
    textBody.push_back({{"partId", partId},
                        {"type", isPlain ? "text/plain" : "text/html"},
                        {"charset", "utf-8"},
                        {"size", text.size()}});
    if (withText)
      bodyValues[partId] = {{"value", text}, {"isEncodingProblem", false}, {"isTruncated", false}};
  }
  json::value messageId;
  if (!email.messageId.empty())
    messageId = json::array{json::string(email.messageId)};
  return {{"id", email.id},
          {"threadId", email.threadId},
          {"mailboxIds", flags(email.mailboxIds)},
          {"keywords", flags(email.keywords)},
          {"messageId", std::move(messageId)},
          {"from", addresses({email.from})},
          {"to", addresses(email.to)},
          {"subject", email.subject ? json::value(*email.subject) : json::value(nullptr)},
          {"receivedAt", mail::isoTime(email.receivedAt)},
          {"preview", mail::previewOf(email.html, 256)},
          {"hasAttachment", email.hasAttachment()},
          {"textBody", std::move(textBody)},
          {"bodyValues", std::move(bodyValues)},
          {"attachments", attachments(store, email)}};
}

} // namespace ondrel::demo::jmap
