#pragma once

#include "demo/control/FaultGate.h"
#include "demo/control/RequestLog.h"
#include "demo/http/SignIn.h"
#include "demo/jmap/EventStreams.h"
#include "demo/mail/MailStore.h"

#include <boost/json.hpp>

#include <functional>
#include <map>

namespace ondrel::demo::control {

// All that orders reach.
struct Controlled {
  FaultPlan& faults;
  FaultGate& gate;
  RequestLog& log;
  http::SignIn& signIn;
  mail::MailStore& store;
  jmap::EventStreams& streams;
  bool& isInLabelsMode;
  std::string& announcement; // the feed's JSON; empty for none
};

// What tests order of the service, on a port of its own: see README.md for the calls. Requests that a
// web page could have made, which carry an Origin header or a host name that isn't ours, are refused.
class ControlSurface {
 public:
  explicit ControlSurface(Controlled parts);

  void handle(http::Exchange& exchange) const;

 private:
  // None for an order that makes no sense.
  using Answer = std::optional<boost::json::value>;

  Answer fail(const boost::json::object& order) const;
  Answer stream(const boost::json::object& order) const;
  Answer reset() const;

  Controlled parts_;
  std::map<std::string, std::function<Answer(const boost::json::object& order)>>
      orders_; // by method and path
};

} // namespace ondrel::demo::control
