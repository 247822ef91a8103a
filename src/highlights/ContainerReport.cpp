#include "highlights/ContainerReport.h"

#include "base/JsonReader.h"
#include "web/page/ScriptMessageFields.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <utility>

namespace ondrel::highlights {

namespace {

// No conversation comes near this one.
constexpr std::int64_t mostContainers = 10'000;

std::vector<std::int64_t> integers(const std::string* text) {
  boost::json::error_code error;
  const auto value = text ? boost::json::parse(*text, error) : boost::json::value();
  const base::JsonReader list(value);
  std::vector<std::int64_t> result;
  if (list.size() <= mostContainers)
    for (const auto& element : list.elements())
      result.push_back(element.integer().value_or(-1));
  return result;
}

} // namespace

std::optional<ContainerReport> ContainerReport::from(const web::ScriptMessageFields& fields) {
  const auto count = fields.integer("count");
  if (!count)
    return std::nullopt;
  const auto* openId = fields.find("internalId");
  return ContainerReport{.number = fields.integer("report").value_or(0),
                         .count = *count,
                         .focusedIndex = fields.integer("focusedIndex"),
                         .cardCount = fields.integer("cardCount").value_or(0),
                         .cardIndexes = integers(fields.find("cardIndexes")),
                         .focusedCard = fields.integer("focusedCard"),
                         .openId = openId ? *openId : ""};
}

std::vector<std::optional<std::string>> containerMessageIds(const ContainerReport& report,
                                                            const std::vector<jmap::ThreadEmailInfo>& thread,
                                                            const std::string& openId) {
  if (thread.empty() || report.count < 1)
    return {};
  const auto& cards = report.cardIndexes;
  const bool hasCards = report.cardCount > 0 && std::cmp_equal(cards.size(), report.count) &&
                        std::ranges::any_of(cards, [](auto card) { return card >= 0; });
  // Unsigned, so that no number of the page's overflows: what is negative comes out behind the thread's end.
  std::uint64_t offset = 0;
  const auto open = std::ranges::find(thread, openId, &jmap::ThreadEmailInfo::internalId);
  const bool isWhole = hasCards && std::cmp_equal(report.cardCount, thread.size());
  if (open != thread.end() && !isWhole) {
    const bool isAlone = hasCards ? report.cardCount == 1 : report.count == 1;
    const auto focused = hasCards ? report.focusedCard : report.focusedIndex;
    // One message in view is the open one, which the application then doesn't mark.
    if (focused || isAlone)
      offset =
          static_cast<std::uint64_t>(open - thread.begin()) - static_cast<std::uint64_t>(focused.value_or(0));
  }
  std::vector<std::optional<std::string>> ids(
      static_cast<std::size_t>(std::min(report.count, mostContainers)));
  for (std::size_t container = 0; container < ids.size(); ++container) {
    if (hasCards && cards[container] < 0)
      continue;
    const auto place = hasCards ? static_cast<std::uint64_t>(cards[container]) : container;
    if (const auto position = place + offset; position < thread.size() && !thread[position].messageId.empty())
      ids[container] = thread[position].messageId;
  }
  return ids;
}

} // namespace ondrel::highlights
