#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo::control {

// What is to go wrong with a request, some time after it came.
struct Fault {
  enum class Kind {
    status,  // answer with `status` and `body` instead of what there is to say
    delay,   // answer as usual
    close,   // close the connection without an answer
    silence, // never answer
  };
  Kind kind = Kind::status;
  std::chrono::milliseconds delay{0};
  unsigned status = 500;
  std::string body = {}; // of a call of a JMAP method: the type of its error
};

// The faults that a test has ordered: each for the next `count` requests whose path begins with a prefix, or
// the next calls of a JMAP method.
class FaultPlan {
 public:
  void add(std::string prefix, unsigned count, Fault fault);
  // Uses up one count of the oldest order that fits.
  std::optional<Fault> take(std::string_view name);
  void clear() { orders_.clear(); }

 private:
  struct Order {
    std::string prefix;
    unsigned left;
    Fault fault;
  };
  std::vector<Order> orders_;
};

} // namespace ondrel::demo::control
