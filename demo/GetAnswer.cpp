#include "demo/GetAnswer.h"

#include <algorithm>
#include <set>

namespace ondrel::demo {

namespace json = boost::json;

GetAnswer::GetAnswer(Arguments& arguments, const char* accountId,
                     std::initializer_list<const char*> properties)
    : accountId_(accountId), ids_(arguments.texts("ids")), properties_(arguments.texts("properties")) {
  for (const auto& property : properties_.value_or(std::vector<std::string>()))
    if (std::ranges::find(properties, property) == properties.end())
      arguments.reject("unknown property " + property);
  if (properties_)
    properties_->push_back("id"); // is always there
}

MethodResult GetAnswer::of(const std::vector<std::string>& all, const std::string& state,
                           const std::function<std::optional<json::object>(const std::string&)>& make) const {
  const auto& ids = ids_ ? *ids_ : all;
  if (ids.size() > mostObjectsInGet)
    return std::unexpected(MethodError{"requestTooLarge"});
  json::array list;
  json::array notFound;
  std::set<std::string> seen;
  for (const auto& id : ids) {
    if (!seen.insert(id).second)
      continue; // an id that is named twice is answered once
    auto object = make(id);
    if (!object) {
      notFound.emplace_back(id);
      continue;
    }
    if (properties_) {
      json::object chosen;
      for (const auto& member : *object)
        if (std::ranges::find(*properties_, member.key()) != properties_->end())
          chosen.emplace(member.key(), member.value());
      object = std::move(chosen);
    }
    list.push_back(std::move(*object));
  }
  return json::object{{"accountId", accountId_},
                      {"state", state},
                      {"list", std::move(list)},
                      {"notFound", std::move(notFound)}};
}

} // namespace ondrel::demo
