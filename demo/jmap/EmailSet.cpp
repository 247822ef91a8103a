#include "demo/jmap/JmapMethods.h"

#include <boost/json.hpp>

#include <algorithm>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

// Applies one member of a patch, such as "keywords" or "mailboxIds/x", to a copy of an email. The type of the
// SetError, or null.
const char* patch(mail::Email& email, std::string_view path, const json::value& value) {
  const auto slash = path.find('/');
  const auto name = path.substr(0, slash);
  auto* set = name == "mailboxIds" ? &email.mailboxIds : name == "keywords" ? &email.keywords : nullptr;
  if (!set)
    return "invalidProperties";
  if (slash != std::string_view::npos) {
    const std::string member(path.substr(slash + 1));
    if (member.contains('/') || (!value.is_null() && value != true))
      return "invalidPatch";
    if (value.is_null())
      set->erase(member);
    else
      set->insert(member);
    return nullptr;
  }
  set->clear();
  for (const auto& [member, isIn] : value.is_object() ? value.get_object() : json::object())
    set->emplace(member);
  return value.is_object() ? nullptr : "invalidProperties";
}

const char* update(mail::MailStore& store, const std::string& id, const json::value& changes) {
  const auto* email = store.email(id);
  if (!email || !changes.is_object())
    return email ? "invalidPatch" : "notFound";
  auto draft = *email;
  for (const auto& [path, value] : changes.get_object())
    if (const auto* error = patch(draft, path, value))
      return error;
  const auto isMailbox = [&](const std::string& mailboxId) {
    const auto* mailbox = store.mailbox(mailboxId);
    return mailbox && mailbox->id == mailboxId;
  };
  if (draft.mailboxIds.empty() || !std::ranges::all_of(draft.mailboxIds, isMailbox))
    return "invalidProperties";
  store.update(id, std::move(draft.mailboxIds), std::move(draft.keywords));
  return nullptr;
}

json::value orNull(json::object object) {
  return object.empty() ? json::value(nullptr) : json::value(std::move(object));
}

} // namespace

MethodResult emailSet(const JmapContext& context, Arguments& arguments) {
  auto& store = context.store;
  const auto updates = arguments.get<json::object>("update").value_or(json::object());
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  if (updates.size() > mostObjectsInGet)
    return std::unexpected(MethodError{"requestTooLarge"});
  const auto oldState = store.changes().state(mail::DataType::email);
  json::object updated;
  json::object notUpdated;
  for (const auto& [id, changes] : updates)
    if (const auto* error = update(store, id, changes))
      notUpdated[id] = {{"type", error}};
    else
      updated[id] = nullptr;
  return json::object{{"accountId", mailAccountId},
                      {"oldState", oldState},
                      {"newState", store.changes().state(mail::DataType::email)},
                      {"created", nullptr},
                      {"updated", orNull(std::move(updated))},
                      {"destroyed", nullptr},
                      {"notCreated", nullptr},
                      {"notUpdated", orNull(std::move(notUpdated))},
                      {"notDestroyed", nullptr}};
}

} // namespace ondrel::demo::jmap
