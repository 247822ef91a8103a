#include "demo/MethodFaults.h"

#include <algorithm>

namespace ondrel::demo {

void MethodFaults::add(std::string method, std::string errorType, unsigned count) {
  if (count > 0)
    orders_.push_back({std::move(method), std::move(errorType), count});
}

std::optional<std::string> MethodFaults::take(const std::string& method) {
  const auto order = std::ranges::find(orders_, method, &Order::method);
  if (order == orders_.end())
    return std::nullopt;
  auto type = order->errorType;
  if (--order->left == 0)
    orders_.erase(order);
  return type;
}

} // namespace ondrel::demo
