#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ondrel::demo {

// Method-level errors that a test has ordered, each for the next `count` calls of one method.
class MethodFaults {
 public:
  void add(std::string method, std::string errorType, unsigned count);
  // The type of the error that this call is to end with.
  std::optional<std::string> take(const std::string& method);
  void clear() { orders_.clear(); }

 private:
  struct Order {
    std::string method;
    std::string errorType;
    unsigned left;
  };
  std::vector<Order> orders_;
};

} // namespace ondrel::demo
