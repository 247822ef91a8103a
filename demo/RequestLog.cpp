#include "demo/RequestLog.h"

namespace ondrel::demo {

namespace json = boost::json;

namespace {

constexpr std::size_t mostEntries = 500;
constexpr std::size_t mostBytes = 1'000'000; // of a body that is kept

json::array methodNames(const json::object& request) {
  json::array names;
  const auto* calls = request.if_contains("methodCalls");
  for (const auto& call : calls && calls->is_array() ? calls->get_array() : json::array())
    if (call.is_array() && !call.get_array().empty())
      names.push_back(call.get_array()[0]);
  return names;
}

} // namespace

void RequestLog::note(const Exchange& exchange) {
  const auto path = exchange.path();
  const bool isAuthorized = exchange.header("Authorization").has_value();
  if (!path.starts_with("/jmap/") && !isAuthorized)
    return;
  auto body = exchange.body().size() > mostBytes ? std::nullopt : exchange.jsonBody();
  json::object entry{{"method", exchange.method()},
                     {"host", exchange.host()},
                     {"path", path},
                     {"query", exchange.queryText()},
                     {"accept", exchange.header("Accept").value_or("")},
                     {"hasAuthorization", isAuthorized},
                     {"hasCookie", exchange.header("Cookie").has_value()},
                     {"calls", body ? methodNames(*body) : json::array()}};
  entry["request"] = body ? json::value(std::move(*body)) : json::value(nullptr);
  entries_.push_back(std::move(entry));
  if (entries_.size() > mostEntries)
    entries_.pop_front();
}

} // namespace ondrel::demo
