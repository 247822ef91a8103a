#include "demo/control/RequestLog.h"

namespace ondrel::demo::control {

namespace {

constexpr std::size_t mostEntries = 500;

} // namespace

void RequestLog::note(const http::Exchange& exchange) {
  const auto host = exchange.host();
  const auto path = exchange.path();
  if (!counts_[host].is_object())
    counts_[host].emplace_object();
  auto& count = counts_[host].get_object()[path];
  count = count.is_null() ? 1 : count.get_int64() + 1;

  const bool isAuthorized = exchange.header("Authorization").has_value();
  if (!path.starts_with("/jmap/") && !isAuthorized)
    return;
  entries_.push_back({{"method", exchange.method()},
                      {"host", host},
                      {"path", path},
                      {"query", exchange.queryText()},
                      {"hasAuthorization", isAuthorized},
                      {"hasCookie", exchange.header("Cookie").has_value()},
                      {"request", exchange.jsonBody()}});
  if (entries_.size() > mostEntries)
    entries_.erase(entries_.begin());
}

} // namespace ondrel::demo::control
