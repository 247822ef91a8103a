#pragma once

#include "demo/ControlSurface.h"
#include "demo/JmapSurface.h"

#include <cstdint>
#include <expected>
#include <string>

namespace ondrel::demo {

// The whole demonstration service: its mail, its surfaces, and the two servers that they stand on. Needs an
// event loop on GLib's default main context.
class Service {
 public:
  Service();

  // Port 0 takes a free one. The result of a failure is one line of text.
  std::expected<void, std::string> listen(std::uint16_t webPort, std::uint16_t controlPort);
  std::uint16_t webPort() const { return webPort_; }
  std::uint16_t controlPort() const { return controlPort_; }

 private:
  HttpServer web_; // the servers go last, after the answers that are under way
  HttpServer controlServer_;
  MailStore store_;
  SignIn signIn_;
  bool isInLabelsMode_ = true;
  RequestLog log_;
  Router router_;
  FaultPlan faults_;
  EventStreams streams_{store_};
  JmapSurface jmap_;
  FaultGate gate_;
  ControlSurface control_{{faults_, gate_, log_, signIn_, store_, streams_, isInLabelsMode_}};
  std::uint16_t webPort_ = 0;
  std::uint16_t controlPort_ = 0;
};

} // namespace ondrel::demo
