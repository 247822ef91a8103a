#pragma once

#include "demo/http/Exchange.h"

#include <boost/json.hpp>

namespace ondrel::demo::control {

// How often each path of each host was asked for, and the latest requests that are of interest to a test of
// the JMAP client: those of the JMAP surface, and all others that carry an Authorization header. It keeps
// whether there was a token, never the token.
class RequestLog {
 public:
  void note(const http::Exchange& exchange);
  const boost::json::object& counts() const { return counts_; }
  const boost::json::array& entries() const { return entries_; }

 private:
  boost::json::object counts_; // {"localhost": {"/mail/Inbox/": 2}}
  boost::json::array entries_; // the oldest first
};

} // namespace ondrel::demo::control
