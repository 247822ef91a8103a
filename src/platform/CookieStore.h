#pragma once

#include "async/Task.h"

#include <string>
#include <vector>

namespace ondrel::platform {

struct Cookie {
  std::string name;
  std::string value;
  std::string domain; // with a leading dot when subdomains get it too
  std::string path;
  bool secure = false;
  bool httpOnly = false;
};

// The cookies that the web views share.
class CookieStore {
 public:
  virtual ~CookieStore() = default;
  // All of them, in the store's order, those that are hidden from page scripts included.
  virtual async::Task<std::vector<Cookie>> allCookies() = 0;
};

} // namespace ondrel::platform
