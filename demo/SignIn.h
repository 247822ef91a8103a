#pragma once

#include "demo/Exchange.h"

#include <string>

namespace ondrel::demo {

// Who is signed in: whoever has the cookie of the present generation. There is one user and no password.
// The cookie outlives a restart of the service, so that a kept profile stays signed in.
class SignIn {
 public:
  bool isSignedIn(const Exchange& exchange) const;
  void giveCookie(Exchange& exchange) const;
  void takeCookie(Exchange& exchange) const;
  // Every cookie given so far stops counting.
  void signOutEverybody() { ++generation_; }

 private:
  std::string cookieValue() const { return "demo-" + std::to_string(generation_); }

  int generation_ = 1;
};

} // namespace ondrel::demo
