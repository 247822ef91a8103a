#pragma once

#include "demo/http/Exchange.h"

#include <string>
#include <string_view>

namespace ondrel::demo::http {

// Who is signed in: whoever has the cookie of the present generation. There is one user and no password.
// The cookie outlives a restart of the service, so that a kept profile stays signed in. The bearer token is
// one at a time, random, made when a signed-in page asks for it.
class SignIn {
 public:
  bool isSignedIn(const Exchange& exchange) const { return exchange.hasCookie(cookie()); }
  void giveCookie(Exchange& exchange) const;
  // Takes the cookie from this client and the token from all.
  void signOut(Exchange& exchange);
  // Every cookie given so far stops counting, and the token.
  void signOutEverybody();

  // The token that is valid now, made anew when there is none.
  const std::string& token();
  bool isToken(std::string_view token) const { return !token_.empty() && token == token_; }
  void expireToken() { token_.clear(); }

 private:
  std::string cookie() const { return "ondrel-demo-session=demo-" + std::to_string(generation_); }

  int generation_ = 1;
  std::string token_;
};

} // namespace ondrel::demo::http
