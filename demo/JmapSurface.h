#pragma once

#include "demo/AccessTokens.h"
#include "demo/EventStreams.h"
#include "demo/JmapMethod.h"
#include "demo/Router.h"

namespace ondrel::demo {

// JMAP (RFC 8620 and 8621) under /jmap/ on the hosts of the web application, for whoever has the bearer
// token: the session resource, the API, the event source and downloads.
class JmapSurface {
 public:
  JmapSurface(JmapContext context, const AccessTokens& tokens, EventStreams& streams)
      : context_(context), tokens_(tokens), streams_(streams) {}
  void addTo(Router& router);

 private:
  void add(Router& router, const char* path, const char* method, void (JmapSurface::*answer)(Exchange&));
  bool isAuthorized(const Exchange& exchange) const;
  void session(Exchange& exchange);
  void api(Exchange& exchange);
  void events(Exchange& exchange);
  void download(Exchange& exchange);

  JmapContext context_;
  const AccessTokens& tokens_;
  EventStreams& streams_;
};

} // namespace ondrel::demo
