#include "demo/ListMethods.h"

#include "demo/GetAnswer.h"

namespace ondrel::demo {

namespace json = boost::json;

namespace {

json::object mailboxObject(const MailStore& store, const Mailbox& mailbox) {
  const auto counts = store.counts(mailbox.id);
  const auto sortOrder = &mailbox - store.mailboxes().data() + 1;
  const bool mayChange = mailbox.role.empty();
  return {{"id", mailbox.id},
          {"name", mailbox.name},
          {"parentId", nullptr},
          {"role", mailbox.role.empty() ? json::value(nullptr) : json::value(mailbox.role)},
          {"sortOrder", sortOrder},
          {"totalEmails", counts.emails},
          {"unreadEmails", counts.unreadEmails},
          {"totalThreads", counts.threads},
          {"unreadThreads", counts.unreadThreads},
          {"myRights", json::object{{"mayReadItems", true},
                                    {"mayAddItems", true},
                                    {"mayRemoveItems", true},
                                    {"maySetSeen", true},
                                    {"maySetKeywords", true},
                                    {"mayCreateChild", false},
                                    {"mayRename", mayChange},
                                    {"mayDelete", mayChange},
                                    {"maySubmit", false}}},
          {"isSubscribed", true}};
}

json::array jsonOf(const std::vector<std::string>& ids) {
  return json::array(ids.begin(), ids.end());
}

MethodResult changesOf(DataType type, const JmapContext& context, Arguments& arguments) {
  const auto since = arguments.text("sinceState");
  const auto most = arguments.count("maxChanges");
  if (!since)
    arguments.reject("sinceState is missing");
  if (most == 0)
    arguments.reject("maxChanges is 0");
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  const auto changes = context.store.changes().since(type, *since, most.value_or(0));
  if (!changes)
    return std::unexpected(MethodError{"cannotCalculateChanges"});
  json::object answer{{"accountId", mailAccountId},
                      {"oldState", *since},
                      {"newState", changes->newState},
                      {"hasMoreChanges", changes->hasMore},
                      {"created", jsonOf(changes->created)},
                      {"updated", jsonOf(changes->updated)},
                      {"destroyed", jsonOf(changes->destroyed)}};
  if (type == DataType::mailbox)
    answer["updatedProperties"] = nullptr;
  return answer;
}

} // namespace

MethodResult mailboxGet(const JmapContext& context, Arguments& arguments) {
  const GetAnswer answer(arguments, mailAccountId,
                         {"id", "name", "parentId", "role", "sortOrder", "totalEmails", "unreadEmails",
                          "totalThreads", "unreadThreads", "myRights", "isSubscribed"});
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  const auto& store = context.store;
  std::vector<std::string> all;
  for (const auto& mailbox : store.mailboxes())
    all.push_back(mailbox.id);
  return answer.of(all, store.changes().state(DataType::mailbox), [&](const std::string& id) {
    const auto* mailbox = store.mailboxById(id);
    return mailbox ? std::optional(mailboxObject(store, *mailbox)) : std::nullopt;
  });
}

MethodResult threadGet(const JmapContext& context, Arguments& arguments) {
  const GetAnswer answer(arguments, mailAccountId, {"id", "emailIds"});
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  const auto& store = context.store;
  std::vector<std::string> all;
  for (const auto& email : store.emails())
    all.push_back(email.threadId);
  return answer.of(all, store.changes().state(DataType::thread),
                   [&](const std::string& id) -> std::optional<json::object> {
                     const auto thread = store.thread(id);
                     if (thread.empty())
                       return std::nullopt;
                     json::array emailIds;
                     for (const auto* email : thread)
                       emailIds.emplace_back(email->id);
                     return json::object{{"id", id}, {"emailIds", std::move(emailIds)}};
                   });
}

MethodResult emailChanges(const JmapContext& context, Arguments& arguments) {
  return changesOf(DataType::email, context, arguments);
}

MethodResult mailboxChanges(const JmapContext& context, Arguments& arguments) {
  return changesOf(DataType::mailbox, context, arguments);
}

MethodResult threadChanges(const JmapContext& context, Arguments& arguments) {
  return changesOf(DataType::thread, context, arguments);
}

} // namespace ondrel::demo
