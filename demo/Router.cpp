#include "demo/Router.h"

namespace ondrel::demo {

void Router::add(Site site, std::string path, Handler handler) {
  routes_.push_back({site, std::move(path), std::move(handler)});
}

void Router::dispatch(Exchange& exchange) const {
  const auto site = siteOf(exchange.host());
  if (!site) {
    exchange.refuse(SOUP_STATUS_MISDIRECTED_REQUEST, "No such host here.");
    return;
  }
  const auto path = exchange.path();
  const Route* best = nullptr;
  for (const auto& route : routes_) {
    const bool matches = route.path.ends_with('/') ? path.starts_with(route.path) : path == route.path;
    if (route.site == *site && matches && (!best || route.path.size() > best->path.size()))
      best = &route;
  }
  if (!best) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    return;
  }
  best->handler(exchange);
}

std::optional<Site> Router::siteOf(std::string_view host) {
  if (host == "localhost" || host == "beta.localhost")
    return Site::web;
  if (host == "usercontent.localhost")
    return Site::userContent;
  return std::nullopt;
}

} // namespace ondrel::demo
