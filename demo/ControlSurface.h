#pragma once

#include "demo/Exchange.h"
#include "demo/FaultGate.h"
#include "demo/MailStore.h"
#include "demo/RequestCounters.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

/// What tests order of the service, on a port of its own: see README.md for the calls. Requests that a
/// web page could have made, which carry an Origin header or a host name that isn't ours, are refused.
class ControlSurface {
 public:
  ControlSurface(FaultGate& gate, RequestCounters& counters, SignIn& signIn, MailStore& store)
      : gate_(gate), counters_(counters), signIn_(signIn), store_(store) {}

  void handle(Exchange& exchange);

 private:
  void fail(Exchange& exchange);
  void deliver(Exchange& exchange);
  void requests(Exchange& exchange) const;

  FaultGate& gate_;
  RequestCounters& counters_;
  SignIn& signIn_;
  MailStore& store_;
};

} // namespace ondrel::demo
