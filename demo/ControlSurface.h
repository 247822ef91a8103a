#pragma once

#include "demo/AccessTokens.h"
#include "demo/EventStreams.h"
#include "demo/Exchange.h"
#include "demo/FaultGate.h"
#include "demo/MailStore.h"
#include "demo/MethodFaults.h"
#include "demo/RequestCounters.h"
#include "demo/RequestLog.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// All that orders reach.
struct Controlled {
  FaultGate& gate;
  RequestCounters& counters;
  RequestLog& requestLog;
  SignIn& signIn;
  AccessTokens& tokens;
  MailStore& store;
  EventStreams& streams;
  MethodFaults& methodFaults;
  bool& isInLabelsMode;
};

// What tests order of the service, on a port of its own: see README.md for the calls. Requests that a
// web page could have made, which carry an Origin header or a host name that isn't ours, are refused.
class ControlSurface {
 public:
  explicit ControlSurface(Controlled parts) : parts_(parts) {}

  void handle(Exchange& exchange);

 private:
  void get(Exchange& exchange) const;
  void post(Exchange& exchange);
  void fail(Exchange& exchange);
  void failMethod(Exchange& exchange);
  void deliverMail(Exchange& exchange);
  void token(Exchange& exchange);
  void stream(Exchange& exchange);
  void reset(Exchange& exchange);
  boost::json::object requestCounts() const;

  Controlled parts_;
};

} // namespace ondrel::demo
