#include "demo/EmailGet.h"

#include "demo/EmailJson.h"

#include <set>

namespace ondrel::demo {

namespace json = boost::json;

MethodResult emailGet(const JmapContext& context, Arguments& arguments) {
  const auto& store = context.store;
  const auto ids = arguments.texts("ids");
  EmailJsonOptions options;
  options.properties = arguments.texts("properties").value_or(defaultEmailProperties());
  options.bodyProperties = arguments.texts("bodyProperties").value_or(defaultBodyProperties());
  options.fetchText = arguments.flag("fetchTextBodyValues", false);
  options.fetchHtml = arguments.flag("fetchHTMLBodyValues", false);
  options.fetchAll = arguments.flag("fetchAllBodyValues", false);
  options.mostBodyBytes = arguments.count("maxBodyValueBytes").value_or(0);
  for (const auto& property : options.properties)
    if (!isEmailProperty(property))
      arguments.reject("unknown property " + property);
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  if ((ids ? ids->size() : store.emails().size()) > mostObjectsInGet)
    return std::unexpected(MethodError{"requestTooLarge"});

  json::array list;
  json::array notFound;
  if (ids) {
    std::set<std::string> seen;
    for (const auto& id : *ids) {
      if (!seen.insert(id).second)
        continue;
      if (const auto* email = store.email(id))
        list.push_back(emailJson(store, *email, options));
      else
        notFound.emplace_back(id);
    }
  } else {
    for (const auto& email : store.emails())
      list.push_back(emailJson(store, email, options));
  }
  return json::object{{"accountId", mailAccountId},
                      {"state", store.changes().state(DataType::email)},
                      {"list", std::move(list)},
                      {"notFound", std::move(notFound)}};
}

} // namespace ondrel::demo
