#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo {

/// What is to go wrong with a request.
struct Fault {
  enum class Kind {
    Status,  ///< answer with `status` and nothing else
    Close,   ///< close the connection without an answer
    Silence, ///< take the request and never answer
    Delay,   ///< answer as usual, after `delay`
  };
  Kind kind = Kind::Status;
  unsigned status = 500;
  std::chrono::milliseconds delay{0};
};

/// The faults that a test has ordered: each for the next `count` requests whose path begins with a prefix.
class FaultPlan {
 public:
  void add(std::string pathPrefix, unsigned count, Fault fault);
  /// Uses up one count of the oldest order that fits.
  std::optional<Fault> take(std::string_view path);
  void clear() { orders_.clear(); }

 private:
  struct Order {
    std::string pathPrefix;
    unsigned left;
    Fault fault;
  };
  std::vector<Order> orders_;
};

} // namespace ondrel::demo
