#pragma once

#include "demo/control/ControlSurface.h"
#include "demo/jmap/JmapSurface.h"

#include <cstdint>
#include <expected>
#include <string>

namespace ondrel::demo {

// The whole demonstration service: its mail, its surfaces, and the two servers that they stand on. Needs an
// event loop on GLib's default main context.
class Service {
 public:
  Service();

  // As the order does; 0 for none.
  void addAttachmentMail(int emails);
  // Port 0 takes a free one. The result of a failure is one line of text.
  std::expected<void, std::string> listen(std::uint16_t webPort, std::uint16_t controlPort);
  std::uint16_t webPort() const { return webPort_; }
  std::uint16_t controlPort() const { return controlPort_; }

 private:
  http::HttpServer web_; // the servers go last, after the answers that are under way
  http::HttpServer controlServer_;
  mail::MailStore store_;
  http::SignIn signIn_;
  bool isInLabelsMode_ = true;
  std::string announcement_;
  control::RequestLog log_;
  http::Router router_;
  control::FaultPlan faults_;
  jmap::EventStreams streams_{store_};
  jmap::JmapSurface jmap_;
  control::FaultGate gate_;
  control::ControlSurface control_{
      {faults_, gate_, log_, signIn_, store_, streams_, isInLabelsMode_, announcement_}};
  std::uint16_t webPort_ = 0;
  std::uint16_t controlPort_ = 0;
};

} // namespace ondrel::demo
