#pragma once

#include "demo/FaultPlan.h"
#include "demo/GLibPointers.h"
#include "demo/HttpServer.h"
#include "demo/TakenConnection.h"

#include <list>

namespace ondrel::demo {

// Stands before the handlers of a server and carries out the faults of its plan.
class FaultGate {
 public:
  explicit FaultGate(HttpServer::Handler next) : next_(std::move(next)) {}
  ~FaultGate();
  FaultGate(const FaultGate&) = delete;
  FaultGate& operator=(const FaultGate&) = delete;

  FaultPlan& plan() { return plan_; }
  void pass(SoupServerMessage* message);
  // Closes the connections of the requests that were met with silence or are being delayed.
  void dropHeld();

 private:
  struct Held {
    FaultGate* gate;
    ObjectPtr<SoupServerMessage> message;
    guint timer = 0;     // 0: held until dropped
    unsigned status = 0; // to answer with; 0: as usual
  };

  void hold(SoupServerMessage* message, std::optional<std::chrono::milliseconds> delay, unsigned status = 0);
  void letGo(Held* held);
  void truncate(SoupServerMessage* message);
  void cut(SoupServerMessage* message);

  FaultPlan plan_;
  HttpServer::Handler next_;
  std::list<Held> held_;
  std::list<std::unique_ptr<TakenConnection>> cut_; // that still have to send their half
};

} // namespace ondrel::demo
