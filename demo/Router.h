#pragma once

#include "demo/Exchange.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::demo {

// The hosts that share the web port. A request is told apart by its Host header.
enum class Site { web, userContent };

// Finds the handler of a request by its host and path.
class Router {
 public:
  using Handler = std::function<void(Exchange&)>;

  // A path that ends with "/" takes everything below it as well; the longest match wins.
  void add(Site site, std::string path, Handler handler);
  // Answers 421 for a host that isn't ours and 404 for an unknown path.
  void dispatch(Exchange& exchange) const;

  // None for a host that isn't ours. The beta name of the web application is the web application.
  static std::optional<Site> siteOf(std::string_view host);

 private:
  struct Route {
    Site site;
    std::string path;
    Handler handler;
  };
  std::vector<Route> routes_;
};

} // namespace ondrel::demo
