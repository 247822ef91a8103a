#include "demo/control/FaultPlan.h"

#include <algorithm>

namespace ondrel::demo::control {

void FaultPlan::add(std::string prefix, unsigned count, Fault fault) {
  orders_.push_back({std::move(prefix), count, std::move(fault)});
}

std::optional<Fault> FaultPlan::take(std::string_view name) {
  const auto order =
      std::ranges::find_if(orders_, [&](const Order& o) { return name.starts_with(o.prefix); });
  if (order == orders_.end())
    return std::nullopt;
  auto fault = order->fault;
  if (--order->left == 0)
    orders_.erase(order);
  return fault;
}

} // namespace ondrel::demo::control
