#pragma once

#include "async/Timer.h"
#include "demo/control/FaultPlan.h"
#include "demo/http/HttpServer.h"

#include <list>

namespace ondrel::demo::control {

// Stands before the handlers of a server and carries out the faults of a plan.
class FaultGate {
 public:
  FaultGate(FaultPlan& plan, http::HttpServer::Handler next) : plan_(plan), next_(std::move(next)) {}

  void pass(SoupServerMessage* message);
  // Closes the connections of the requests that were met with silence or are being delayed.
  void dropHeld();

 private:
  struct Held {
    glib::Ref<SoupServerMessage> message;
    Fault fault;
    async::Timer timer = {};
  };

  void letGo(const Held& held);

  FaultPlan& plan_;
  http::HttpServer::Handler next_;
  std::list<Held> held_;
};

} // namespace ondrel::demo::control
