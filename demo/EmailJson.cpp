#include "demo/EmailJson.h"

#include "demo/EmailParts.h"
#include "demo/HeaderForms.h"

#include <boost/json.hpp>

#include <algorithm>
#include <array>

namespace ondrel::demo {

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

json::object partJson(const EmailPart& part, const std::vector<std::string>& properties) {
  const json::object whole{{"partId", part.partId},
                           {"blobId", part.blobId},
                           {"size", part.size},
                           {"name", textOrNull(part.name)},
                           {"type", part.type},
                           {"charset", textOrNull(part.charset)},
                           {"disposition", textOrNull(part.disposition)},
                           {"cid", textOrNull(part.cid)},
                           {"language", nullptr},
                           {"location", nullptr}};
  json::object chosen;
  for (const auto& property : properties)
    if (const auto* value = whole.if_contains(property))
      chosen[property] = *value;
  return chosen;
}

json::array partsJson(const std::vector<EmailPart>& parts, const std::vector<std::string>& properties) {
  json::array list;
  for (const auto& part : parts)
    list.push_back(partJson(part, properties));
  return list;
}

json::array shownJson(const std::optional<EmailPart>& part, const std::vector<std::string>& properties) {
  return part ? json::array{partJson(*part, properties)} : json::array();
}

json::object multipart(const char* type, json::array parts) {
  return {{"partId", nullptr}, {"blobId", nullptr}, {"type", type}, {"subParts", std::move(parts)}};
}

json::object bodyStructure(const EmailParts& parts, const std::vector<std::string>& properties) {
  json::array text;
  for (const auto* part : {&parts.plain, &parts.html})
    if (*part)
      text.push_back(partJson(**part, properties));
  auto files = partsJson(parts.attachments, properties);
  json::value body = text.size() == 1  ? json::value(text[0])
                     : text.size() > 1 ? json::value(multipart("multipart/alternative", text))
                                       : json::value();
  if (files.empty() && body.is_object())
    return body.get_object();
  if (body.is_object())
    files.insert(files.begin(), body);
  return multipart("multipart/mixed", std::move(files));
}

json::object bodyValue(std::string text, std::size_t mostBytes) {
  const bool isTruncated = mostBytes > 0 && text.size() > mostBytes;
  if (isTruncated) {
    auto end = mostBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
      --end; // never in the middle of a character
    text.resize(end);
  }
  return {{"value", text}, {"isEncodingProblem", false}, {"isTruncated", isTruncated}};
}

json::object bodyValues(const Email& email, const EmailParts& parts, const EmailJsonOptions& options) {
  json::object values;
  const auto add = [&](const std::optional<EmailPart>& part, bool isWanted) {
    if (part && (isWanted || options.fetchAll))
      values[part->partId] = bodyValue(textOfPart(email, part->partId), options.mostBodyBytes);
  };
  add(parts.shownAsText(), options.fetchText);
  add(parts.html, options.fetchHtml);
  return values;
}

json::array headersJson(const Email& email) {
  json::array list;
  for (const auto& [name, value] : headersOf(email))
    list.push_back({{"name", name}, {"value", " " + value}});
  return list;
}

// What the property functions may need. The parts are made once for an email.
struct Source {
  const MailStore& store;
  const Email& email;
  const EmailJsonOptions& options;
  const EmailParts parts = partsOf(store, email);
};

json::value nothing(const Source&) {
  return nullptr;
}

constexpr std::pair<const char*, json::value (*)(const Source&)> properties[] = {
    {"id", [](const Source& s) -> json::value { return json::string(s.email.id); }},
    {"blobId", [](const Source& s) -> json::value { return json::string(sourceBlobId(s.email)); }},
    {"threadId", [](const Source& s) -> json::value { return json::string(s.email.threadId); }},
    {"mailboxIds", [](const Source& s) -> json::value { return flags(s.email.mailboxIds); }},
    {"keywords", [](const Source& s) -> json::value { return flags(s.email.keywords); }},
    {"size", [](const Source& s) -> json::value { return sourceOf(s.email).size(); }},
    {"receivedAt", [](const Source& s) -> json::value { return json::string(isoTime(s.email.receivedAt)); }},
    {"messageId",
     [](const Source& s) -> json::value {
       return s.email.messageId.empty() ? json::value(nullptr) : json::array{json::string(s.email.messageId)};
     }},
    {"inReplyTo", nothing},
    {"references", nothing},
    {"sender", nothing},
    {"from", [](const Source& s) -> json::value { return addressesJson(s.email.from); }},
    {"to", [](const Source& s) -> json::value { return addressesJson(s.email.to); }},
    {"cc", nothing},
    {"bcc", nothing},
    {"replyTo", nothing},
    {"subject",
     [](const Source& s) -> json::value {
       return s.email.subject ? json::value(*s.email.subject) : json::value(nullptr);
     }},
    {"sentAt", [](const Source& s) -> json::value { return json::string(isoTime(s.email.receivedAt)); }},
    {"hasAttachment", [](const Source& s) -> json::value { return s.email.hasAttachment(); }},
    {"preview", [](const Source& s) -> json::value { return json::string(previewOf(s.email.html, 256)); }},
    {"bodyValues", [](const Source& s) -> json::value { return bodyValues(s.email, s.parts, s.options); }},
    {"textBody",
     [](const Source& s) -> json::value {
       return shownJson(s.parts.shownAsText(), s.options.bodyProperties);
     }},
    {"htmlBody",
     [](const Source& s) -> json::value { return shownJson(s.parts.html, s.options.bodyProperties); }},
    {"attachments",
     [](const Source& s) -> json::value { return partsJson(s.parts.attachments, s.options.bodyProperties); }},
    {"bodyStructure",
     [](const Source& s) -> json::value { return bodyStructure(s.parts, s.options.bodyProperties); }},
    {"headers", [](const Source& s) -> json::value { return headersJson(s.email); }},
};

} // namespace

std::vector<std::string> defaultEmailProperties() {
  return {"id",        "blobId",    "threadId",   "mailboxIds", "keywords",      "size",    "receivedAt",
          "messageId", "inReplyTo", "references", "sender",     "from",          "to",      "cc",
          "bcc",       "replyTo",   "subject",    "sentAt",     "hasAttachment", "preview", "bodyValues",
          "textBody",  "htmlBody",  "attachments"};
}

std::vector<std::string> defaultBodyProperties() {
  return {"partId",  "blobId",      "size", "name",     "type",
          "charset", "disposition", "cid",  "language", "location"};
}

bool isEmailProperty(const std::string& property) {
  return std::ranges::any_of(properties, [&](const auto& row) { return property == row.first; }) ||
         headerProperty(Email(), property).has_value();
}

json::object emailJson(const MailStore& store, const Email& email, const EmailJsonOptions& options) {
  const Source source{store, email, options};
  json::object object{{"id", email.id}};
  for (const auto& property : options.properties) {
    const auto* row =
        std::ranges::find_if(properties, [&](const auto& other) { return property == other.first; });
    object[property] =
        row != std::end(properties) ? row->second(source) : headerProperty(email, property).value_or(nullptr);
  }
  return object;
}

} // namespace ondrel::demo
