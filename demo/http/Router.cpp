#include "demo/http/Router.h"

namespace ondrel::demo::http {

void Router::add(Site site, std::string method, std::string path, Handler handler) {
  routes_.push_back({site, std::move(method), std::move(path), std::move(handler)});
}

void Router::dispatch(Exchange& exchange) const {
  const auto host = exchange.host();
  const auto path = exchange.path();
  const auto site = host == "usercontent.localhost" ? Site::userContent : Site::web;
  const Route* best = nullptr;
  for (const auto& route : routes_) {
    const bool matches = route.path.ends_with('/') ? path.starts_with(route.path) : path == route.path;
    if (route.site == site && matches && (!best || route.path.size() > best->path.size()))
      best = &route;
  }
  if (site == Site::web && host != "localhost" && host != "beta.localhost")
    exchange.refuse(SOUP_STATUS_MISDIRECTED_REQUEST, "No such host here.");
  else if (!best)
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
  else if (best->method != (exchange.method() == "HEAD" ? "GET" : exchange.method()))
    exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Not that way.");
  else
    best->handler(exchange);
}

} // namespace ondrel::demo::http
