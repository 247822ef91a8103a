#include "demo/FaultPlan.h"

#include <algorithm>

namespace ondrel::demo {

void FaultPlan::add(std::string pathPrefix, unsigned count, Fault fault) {
  if (count > 0)
    orders_.push_back({std::move(pathPrefix), count, fault});
}

std::optional<Fault> FaultPlan::take(std::string_view path) {
  const auto order =
      std::ranges::find_if(orders_, [&](const Order& o) { return path.starts_with(o.pathPrefix); });
  if (order == orders_.end())
    return std::nullopt;
  const auto fault = order->fault;
  if (--order->left == 0)
    orders_.erase(order);
  return fault;
}

} // namespace ondrel::demo
