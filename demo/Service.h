#pragma once

#include "demo/ControlSurface.h"
#include "demo/FaultGate.h"
#include "demo/HttpServer.h"
#include "demo/MailDataSurface.h"
#include "demo/MailStore.h"
#include "demo/RequestCounters.h"
#include "demo/Router.h"
#include "demo/SignIn.h"
#include "demo/StorageSurface.h"
#include "demo/UserContentSurface.h"
#include "demo/WebAppSurface.h"

#include <cstdint>
#include <expected>
#include <string>

namespace ondrel::demo {

/// The whole demonstration service: its mail, its surfaces, and the two servers that they stand on.
class Service {
 public:
  Service();

  /// Port 0 takes a free one. The result of a failure is one line of text.
  std::expected<void, std::string> listen(std::uint16_t webPort, std::uint16_t controlPort);
  std::uint16_t webPort() const { return webPort_; }
  std::uint16_t controlPort() const { return controlPort_; }

 private:
  void serve(SoupServerMessage* message);

  MailStore store_;
  SignIn signIn_;
  RequestCounters counters_;
  Router router_;
  WebAppSurface webApp_{store_, signIn_};
  MailDataSurface mailData_{store_, signIn_};
  StorageSurface storage_{store_, signIn_};
  UserContentSurface userContent_{store_};
  FaultGate gate_;
  ControlSurface control_{gate_, counters_, signIn_, store_};
  HttpServer web_;
  HttpServer controlServer_;
  std::uint16_t webPort_ = 0;
  std::uint16_t controlPort_ = 0;
};

} // namespace ondrel::demo
