#pragma once

#include "demo/EventStreams.h"
#include "demo/JmapMethods.h"
#include "demo/Router.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// JMAP (RFC 8620 and 8621) under /jmap/ on the hosts of the web application, for whoever has the bearer
// token: the session resource, the API, the event source and downloads.
class JmapSurface {
 public:
  JmapSurface(JmapContext context, const SignIn& signIn, EventStreams& streams)
      : context_(std::move(context)), signIn_(signIn), streams_(streams) {}
  void addTo(Router& router);

 private:
  void add(Router& router, const char* method, const char* path, Router::Handler handler);
  void api(Exchange& exchange) const;
  void download(Exchange& exchange) const;

  JmapContext context_;
  const SignIn& signIn_;
  EventStreams& streams_;
};

} // namespace ondrel::demo
