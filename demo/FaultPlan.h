#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo {

// What is to go wrong with a request.
struct Fault {
  enum class Kind {
    status,    // answer with `status` and nothing else
    close,     // close the connection without an answer
    silence,   // take the request and never answer
    delay,     // answer as usual, after `delay`
    body,      // answer with `status`, `contentType` and `body` instead of what there is to say
    huge,      // answer with 50 MB of JSON
    truncated, // answer as usual, but with the first half of the body, as if that were all
    cut,       // answer as usual, but close in the middle of the body
    redirect,  // answer with `status` and send the client to `location`
  };
  Kind kind = Kind::status;
  unsigned status = 500;
  std::chrono::milliseconds delay{0};
  std::string contentType = "application/json";
  std::string body = {};
  std::string location = {};
};

// The faults that a test has ordered: each for the next `count` requests whose path begins with a prefix.
class FaultPlan {
 public:
  void add(std::string pathPrefix, unsigned count, Fault fault);
  // Uses up one count of the oldest order that fits.
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
