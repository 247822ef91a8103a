#include "demo/EmailQuery.h"

#include "demo/EmailFilter.h"

#include <algorithm>
#include <set>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

using Emails = std::vector<const Email*>;

// Before another by one property: -1, 0 or 1.
int compared(const Email& a, const Email& b, const std::string& property) {
  const auto sign = [](const auto& x, const auto& y) { return x < y ? -1 : y < x ? 1 : 0; };
  if (property == "size")
    return sign(sourceOf(a).size(), sourceOf(b).size());
  if (property == "subject")
    return sign(a.subject.value_or(""), b.subject.value_or(""));
  if (property == "from")
    return sign(a.from.name + a.from.email, b.from.name + b.from.email);
  return sign(a.receivedAt, b.receivedAt);
}

struct Order {
  std::string property;
  bool isAscending = true;
};

std::expected<std::vector<Order>, MethodError> ordersOf(const json::array* sort) {
  std::vector<Order> orders;
  for (const auto& value : sort ? *sort : json::array()) {
    const auto* comparator = value.if_object();
    const auto* property = comparator ? comparator->if_contains("property") : nullptr;
    const auto* ascending = comparator ? comparator->if_contains("isAscending") : nullptr;
    if (!property || !property->is_string() || (ascending && !ascending->is_bool()))
      return std::unexpected(MethodError{"invalidArguments", "the sort is of a wrong type"});
    const std::string name(property->get_string());
    if (name != "receivedAt" && name != "sentAt" && name != "size" && name != "from" && name != "subject")
      return std::unexpected(MethodError{"unsupportedSort", name});
    orders.push_back({name, !ascending || ascending->get_bool()});
  }
  return orders;
}

void sortBy(const std::vector<Order>& orders, Emails& emails) {
  std::ranges::sort(emails, [&](const Email* a, const Email* b) {
    for (const auto& [property, isAscending] : orders)
      if (const int order = compared(*a, *b, property); order != 0)
        return isAscending ? order < 0 : order > 0;
    const bool isOlder = a->id.size() != b->id.size() ? a->id.size() < b->id.size() : a->id < b->id;
    return orders.empty() || orders.front().isAscending ? isOlder : a != b && !isOlder;
  });
}

void keepFirstOfThreads(Emails& emails) {
  std::set<std::string> seen;
  std::erase_if(emails, [&](const Email* email) { return !seen.insert(email->threadId).second; });
}

} // namespace

MethodResult emailQuery(const JmapContext& context, Arguments& arguments) {
  const auto& store = context.store;
  const auto* filter = arguments.object("filter");
  const auto* sort = arguments.array("sort");
  const auto position = arguments.integer("position").value_or(0);
  const auto anchor = arguments.text("anchor");
  const auto anchorOffset = arguments.integer("anchorOffset").value_or(0);
  const auto limit = arguments.count("limit");
  const bool calculateTotal = arguments.flag("calculateTotal", false);
  const bool collapseThreads = arguments.flag("collapseThreads", false);
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  const auto fits = emailFilter(store, filter ? *filter : json::object());
  if (!fits)
    return std::unexpected(fits.error());
  const auto orders = ordersOf(sort);
  if (!orders)
    return std::unexpected(orders.error());

  Emails emails;
  for (const auto& email : store.emails())
    if ((*fits)(email))
      emails.push_back(&email);
  sortBy(*orders, emails);
  if (collapseThreads)
    keepFirstOfThreads(emails);

  const auto total = static_cast<std::int64_t>(emails.size());
  auto begin = position < 0 ? std::max<std::int64_t>(0, total + position) : position;
  if (anchor) {
    const auto found = std::ranges::find(emails, *anchor, &Email::id);
    if (found == emails.end())
      return std::unexpected(MethodError{"anchorNotFound"});
    begin = std::max<std::int64_t>(0, found - emails.begin() + anchorOffset);
  }
  json::array ids;
  for (auto i = begin; i < total && (!limit || ids.size() < *limit); ++i)
    ids.emplace_back(emails[static_cast<std::size_t>(i)]->id);
  json::object answer{{"accountId", mailAccountId},
                      {"queryState", store.changes().state(DataType::email)},
                      {"canCalculateChanges", false},
                      {"position", begin},
                      {"ids", std::move(ids)}};
  if (calculateTotal)
    answer["total"] = total;
  return answer;
}

} // namespace ondrel::demo
