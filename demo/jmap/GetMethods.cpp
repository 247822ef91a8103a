#include "demo/jmap/EmailJson.h"
#include "demo/jmap/JmapMethods.h"

#include <boost/json.hpp>

#include <functional>
#include <set>
#include <vector>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

using Names = std::set<std::string>;
using Ids = std::vector<std::string>;

// The common part of the "/get" methods, RFC 8620, 5.1.
struct Getter {
  const char* accountId;
  std::string state;
  Names properties;
  std::optional<Ids> all; // what null stands for; none for too many
  std::function<std::optional<json::object>(const std::string& id)> make;
};

MethodResult got(const Getter& getter, Arguments& arguments) {
  const auto ids = arguments.get<Ids>("ids");
  auto chosen = arguments.get<Names>("properties").value_or(getter.properties);
  for (const auto& property : chosen)
    if (!getter.properties.contains(property))
      arguments.reject("unknown property " + property);
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  chosen.emplace("id"); // is always there
  const auto& wanted = ids ? ids : getter.all;
  if (!wanted || wanted->size() > mostObjectsInGet)
    return std::unexpected(MethodError{"requestTooLarge"});
  json::array list;
  json::array notFound;
  Names seen;
  for (const auto& id : *wanted) {
    if (!seen.insert(id).second)
      continue; // an id that is named twice is answered once
    const auto whole = getter.make(id);
    if (!whole) {
      notFound.emplace_back(id);
      continue;
    }
    json::object object;
    for (const auto& [key, value] : *whole)
      if (chosen.contains(std::string(key)))
        object.emplace(key, value);
    list.push_back(std::move(object));
  }
  return json::object{{"accountId", getter.accountId},
                      {"state", getter.state},
                      {"list", std::move(list)},
                      {"notFound", std::move(notFound)}};
}

} // namespace

MethodResult emailGet(const JmapContext& context, Arguments& arguments) {
  const auto& store = context.store;
  const bool withText = arguments.get<bool>("fetchTextBodyValues").value_or(false);
  for (const char* other : {"fetchHTMLBodyValues", "fetchAllBodyValues"})
    if (arguments.get<bool>(other).value_or(false))
      arguments.reject(std::string(other) + " is not offered here");
  return got({mailAccountId, store.changes().state(mail::DataType::email), emailProperties(), std::nullopt,
              [&](const std::string& id) -> std::optional<json::object> {
                const auto* email = store.email(id);
                return email ? std::optional(emailJson(store, *email, withText)) : std::nullopt;
              }},
             arguments);
}

MethodResult threadGet(const JmapContext& context, Arguments& arguments) {
  const auto& store = context.store;
  return got({mailAccountId,
              store.changes().state(mail::DataType::email),
              {"id", "emailIds"},
              std::nullopt,
              [&](const std::string& id) -> std::optional<json::object> {
                json::array emailIds;
                for (const auto* email : store.thread(id))
                  emailIds.emplace_back(email->id);
                return emailIds.empty() ? std::nullopt
                                        : std::optional(json::object{{"id", id}, {"emailIds", emailIds}});
              }},
             arguments);
}

MethodResult mailboxGet(const JmapContext& context, Arguments& arguments) {
  const auto& store = context.store;
  Ids all;
  for (const auto& mailbox : store.mailboxes())
    all.push_back(mailbox.id);
  return got({mailAccountId,
              store.changes().state(mail::DataType::mailbox),
              {"id", "name", "parentId", "role", "totalEmails", "unreadEmails"},
              all,
              [&](const std::string& id) -> std::optional<json::object> {
                const auto* mailbox = store.mailbox(id);
                if (!mailbox || mailbox->id != id)
                  return std::nullopt;
                const auto counts = store.counts(id);
                return json::object{
                    {"id", id},
                    {"name", mailbox->name},
                    {"parentId", nullptr},
                    {"role", mailbox->role.empty() ? json::value(nullptr) : json::value(mailbox->role)},
                    {"totalEmails", counts.emails},
                    {"unreadEmails", counts.unreadEmails}};
              }},
             arguments);
}

MethodResult clientPreferencesGet(const JmapContext& context, Arguments& arguments) {
  const bool isInLabelsMode = context.isInLabelsMode;
  return got({userAccountId,
              isInLabelsMode ? "labels" : "folders",
              {"id", "inLabelsMode"},
              Ids{"singleton"},
              [&](const std::string& id) {
                return id == "singleton"
                           ? std::optional(json::object{{"id", id}, {"inLabelsMode", isInLabelsMode}})
                           : std::nullopt;
              }},
             arguments);
}

MethodResult emailChanges(const JmapContext& context, Arguments& arguments) {
  const auto since = arguments.get<std::string>("sinceState");
  const auto most = arguments.get<std::size_t>("maxChanges");
  if (!since || most == 0)
    arguments.reject("sinceState is missing or maxChanges is 0");
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  const auto changes = context.store.changes().since(mail::DataType::email, *since, most.value_or(0));
  if (!changes)
    return std::unexpected(MethodError{"cannotCalculateChanges"});
  return json::object{{"accountId", mailAccountId},
                      {"oldState", *since},
                      {"newState", changes->newState},
                      {"hasMoreChanges", changes->hasMore},
                      {"created", json::value_from(changes->created)},
                      {"updated", json::value_from(changes->updated)},
                      {"destroyed", json::array()}};
}

} // namespace ondrel::demo::jmap
