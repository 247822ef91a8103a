#include "demo/EmailSet.h"

#include "demo/ResultReference.h"

#include <glib.h>

#include <algorithm>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

struct SetError {
  std::string type;
  std::string property = {};
};

json::object jsonOf(const SetError& error) {
  json::object object{{"type", error.type}};
  if (!error.property.empty())
    object["properties"] = json::array{json::string(error.property)};
  return object;
}

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), g_ascii_tolower);
  return text;
}

// The two sets of an email that can be changed, while a patch is applied to them.
struct Draft {
  std::set<std::string> mailboxIds;
  std::set<std::string> keywords;
};

// The set that a path such as "keywords" or "mailboxIds/x" begins with.
std::set<std::string>* setOf(Draft& draft, std::string_view path) {
  const auto name = path.substr(0, path.find('/'));
  return name == "mailboxIds" ? &draft.mailboxIds : name == "keywords" ? &draft.keywords : nullptr;
}

std::optional<SetError> replaceWhole(std::set<std::string>& set, const std::string& path,
                                     const json::value& value) {
  const auto* object = value.if_object();
  if (!object)
    return SetError{"invalidProperties", path};
  set.clear();
  for (const auto& member : *object) {
    if (member.value() != true)
      return SetError{"invalidProperties", path};
    set.insert(path == "keywords" ? lowerCase(member.key()) : std::string(member.key()));
  }
  return std::nullopt;
}

std::optional<SetError> patchOne(Draft& draft, const std::string& path, const json::value& value) {
  auto* set = setOf(draft, path);
  const auto slash = path.find('/');
  if (!set)
    return SetError{"invalidProperties", path};
  if (slash == std::string::npos)
    return replaceWhole(*set, path, value);
  auto tokens = pointerTokens(path);
  if (tokens.size() != 2 || !(value.is_null() || value == true))
    return SetError{"invalidPatch"};
  const auto name = set == &draft.keywords ? lowerCase(tokens[1]) : tokens[1];
  if (value.is_null())
    set->erase(name);
  else
    set->insert(name);
  return std::nullopt;
}

std::optional<SetError> update(MailStore& store, const Email* email, const json::value& patchValue) {
  if (!email)
    return SetError{"notFound"};
  const auto* patch = patchValue.if_object();
  if (!patch)
    return SetError{"invalidPatch"};
  Draft draft{email->mailboxIds, email->keywords};
  for (const auto& member : *patch) {
    const std::string path(member.key());
    const auto slash = path.find('/');
    if (slash != std::string::npos && patch->contains(path.substr(0, slash)))
      return SetError{"invalidPatch"}; // one path lies inside another
    if (const auto error = patchOne(draft, path, member.value()))
      return error;
  }
  if (draft.mailboxIds.empty() || !std::ranges::all_of(draft.mailboxIds, [&](const std::string& id) {
        return store.mailboxById(id) != nullptr;
      })) {
    return SetError{"invalidProperties", "mailboxIds"};
  }
  if (draft.mailboxIds != email->mailboxIds)
    store.setMailboxes(email->id, std::move(draft.mailboxIds));
  if (draft.keywords != email->keywords)
    store.setKeywords(email->id, std::move(draft.keywords));
  return std::nullopt;
}

template <class Container>
json::value orNull(Container container) {
  return container.empty() ? json::value(nullptr) : json::value(std::move(container));
}

} // namespace

MethodResult emailSet(const JmapContext& context, Arguments& arguments) {
  auto& store = context.store;
  const auto ifInState = arguments.text("ifInState");
  const auto* create = arguments.object("create");
  const auto* updates = arguments.object("update");
  const auto destroy = arguments.texts("destroy").value_or(std::vector<std::string>());
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  const auto oldState = store.changes().state(DataType::email);
  if (ifInState && *ifInState != oldState)
    return std::unexpected(MethodError{"stateMismatch"});
  if ((create ? create->size() : 0) + (updates ? updates->size() : 0) + destroy.size() > mostObjectsInSet)
    return std::unexpected(MethodError{"requestTooLarge"});

  json::object notCreated;
  for (const auto& member : create ? *create : json::object())
    notCreated[member.key()] = jsonOf({"forbidden"});
  json::object updated;
  json::object notUpdated;
  for (const auto& member : updates ? *updates : json::object()) {
    const std::string id(member.key());
    const bool isDestroyed = std::ranges::find(destroy, id) != destroy.end();
    const auto error =
        isDestroyed ? std::optional(SetError{"willDestroy"}) : update(store, store.email(id), member.value());
    if (error)
      notUpdated[id] = jsonOf(*error);
    else
      updated[id] = nullptr;
  }
  json::array destroyed;
  json::object notDestroyed;
  for (const auto& id : destroy) {
    if (store.email(id)) {
      store.destroy(id);
      destroyed.emplace_back(id);
    } else {
      notDestroyed[id] = jsonOf({"notFound"});
    }
  }
  return json::object{{"accountId", mailAccountId},
                      {"oldState", oldState},
                      {"newState", store.changes().state(DataType::email)},
                      {"created", nullptr},
                      {"updated", orNull(std::move(updated))},
                      {"destroyed", orNull(std::move(destroyed))},
                      {"notCreated", orNull(std::move(notCreated))},
                      {"notUpdated", orNull(std::move(notUpdated))},
                      {"notDestroyed", orNull(std::move(notDestroyed))}};
}

} // namespace ondrel::demo
