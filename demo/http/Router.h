#pragma once

#include "demo/http/Exchange.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::demo::http {

// The hosts that share the web port: the web application under its two names, and what other people wrote.
enum class Site { web, userContent };

// Finds the handler of a request by its host and path.
class Router {
 public:
  using Handler = std::function<void(Exchange&)>;

  // A path that ends with "/" takes everything below it as well; the longest match wins.
  void add(Site site, std::string method, std::string path, Handler handler);
  // HEAD is a GET whose body the server leaves out. Answers 421 for a host that isn't ours, 404 for an
  // unknown path and 405 for another method.
  void dispatch(Exchange& exchange) const;

 private:
  struct Route {
    Site site;
    std::string method;
    std::string path;
    Handler handler;
  };
  std::vector<Route> routes_;
};

} // namespace ondrel::demo::http
