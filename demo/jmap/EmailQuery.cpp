#include "demo/jmap/EmailFilter.h"
#include "demo/jmap/JmapMethods.h"

#include <boost/json.hpp>

#include <algorithm>
#include <tuple>

namespace ondrel::demo::jmap {

namespace json = boost::json;

MethodResult emailQuery(const JmapContext& context, Arguments& arguments) {
  const auto& store = context.store;
  const auto fits = emailFilter(arguments.get<json::object>("filter").value_or(json::object()), arguments);
  const auto sort = arguments.get<json::array>("sort");
  const auto position = arguments.get<std::size_t>("position").value_or(0);
  const auto limit = arguments.get<std::size_t>("limit");
  const bool calculateTotal = arguments.get<bool>("calculateTotal").value_or(false);
  if (sort && *sort != json::parse(R"([{"property": "receivedAt", "isAscending": false}])"))
    arguments.reject("the newest first, or no order", "unsupportedSort");
  if (const auto error = arguments.error())
    return std::unexpected(*error);

  std::vector<const mail::Email*> emails;
  for (const auto& email : store.emails())
    if (fits(email))
      emails.push_back(&email);
  if (sort)
    std::ranges::sort(emails, std::greater{}, [](const mail::Email* email) {
      return std::tuple(email->receivedAt, email->id.size(), std::string_view(email->id));
    });
  json::array ids;
  for (auto i = position; i < emails.size() && (!limit || ids.size() < *limit); ++i)
    ids.emplace_back(emails[i]->id);
  json::object answer{{"accountId", mailAccountId},
                      {"queryState", store.changes().state(mail::DataType::email)},
                      {"canCalculateChanges", false},
                      {"position", position},
                      {"ids", std::move(ids)}};
  if (calculateTotal)
    answer["total"] = emails.size();
  return answer;
}

} // namespace ondrel::demo::jmap
