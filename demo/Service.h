#pragma once

#include "demo/AccessTokens.h"
#include "demo/ControlSurface.h"
#include "demo/EventStreams.h"
#include "demo/FaultGate.h"
#include "demo/HttpServer.h"
#include "demo/JmapSurface.h"
#include "demo/MailDataSurface.h"
#include "demo/MailStore.h"
#include "demo/RequestCounters.h"
#include "demo/RequestLog.h"
#include "demo/Router.h"
#include "demo/SignIn.h"
#include "demo/StorageSurface.h"
#include "demo/UserContentSurface.h"
#include "demo/WebAppSurface.h"

#include <cstdint>
#include <expected>
#include <string>

namespace ondrel::demo {

// The whole demonstration service: its mail, its surfaces, and the two servers that they stand on.
class Service {
 public:
  Service();

  // Port 0 takes a free one. The result of a failure is one line of text.
  std::expected<void, std::string> listen(std::uint16_t webPort, std::uint16_t controlPort);
  std::uint16_t webPort() const { return webPort_; }
  std::uint16_t controlPort() const { return controlPort_; }

 private:
  void serve(SoupServerMessage* message);

  MailStore store_;
  SignIn signIn_;
  AccessTokens tokens_;
  MethodFaults methodFaults_;
  bool isInLabelsMode_ = true;
  RequestCounters counters_;
  RequestLog requestLog_;
  Router router_;
  WebAppSurface webApp_{store_, signIn_, tokens_};
  MailDataSurface mailData_{store_, signIn_, tokens_};
  StorageSurface storage_{store_, signIn_};
  UserContentSurface userContent_{store_};
  EventStreams streams_{store_};
  JmapSurface jmap_{{store_, methodFaults_, isInLabelsMode_}, tokens_, streams_};
  FaultGate gate_;
  ControlSurface control_{
      {gate_, counters_, requestLog_, signIn_, tokens_, store_, streams_, methodFaults_, isInLabelsMode_}};
  HttpServer web_;
  HttpServer controlServer_;
  std::uint16_t webPort_ = 0;
  std::uint16_t controlPort_ = 0;
};

} // namespace ondrel::demo
