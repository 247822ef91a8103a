#pragma once

#include "demo/http/Router.h"
#include "demo/http/SignIn.h"
#include "demo/jmap/EventStreams.h"
#include "demo/jmap/JmapMethods.h"

namespace ondrel::demo::jmap {

// JMAP (RFC 8620 and 8621) under /jmap/ on the hosts of the web application, for whoever has the bearer
// token: the session resource, the API, the event source and downloads.
class JmapSurface {
 public:
  JmapSurface(JmapContext context, const http::SignIn& signIn, EventStreams& streams)
      : context_(std::move(context)), signIn_(signIn), streams_(streams) {}
  void addTo(http::Router& router);

 private:
  void add(http::Router& router, const char* method, const char* path, http::Router::Handler handler);
  void api(http::Exchange& exchange) const;
  void download(http::Exchange& exchange) const;

  JmapContext context_;
  const http::SignIn& signIn_;
  EventStreams& streams_;
};

} // namespace ondrel::demo::jmap
