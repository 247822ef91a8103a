#pragma once

#include "demo/Exchange.h"

#include <boost/json.hpp>

#include <deque>

namespace ondrel::demo {

// The latest requests that are of interest to a test of the JMAP client: those of the JMAP surface, and all
// others that carry an Authorization header. It keeps whether there was a token, never the token.
class RequestLog {
 public:
  void note(const Exchange& exchange);
  boost::json::array entries() const { return boost::json::array(entries_.begin(), entries_.end()); }
  void clear() { entries_.clear(); }

 private:
  std::deque<boost::json::value> entries_; // the oldest first
};

} // namespace ondrel::demo
