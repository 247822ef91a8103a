#include "demo/SignIn.h"

namespace ondrel::demo {

namespace {

constexpr const char* cookieName = "ondrel-demo-session";

} // namespace

bool SignIn::isSignedIn(const Exchange& exchange) const {
  return exchange.cookie(cookieName) == cookieValue();
}

void SignIn::giveCookie(Exchange& exchange) const {
  exchange.setHeader("Set-Cookie", std::string(cookieName) + "=" + cookieValue() +
                                       "; Path=/; Max-Age=31536000; HttpOnly; SameSite=Lax");
}

void SignIn::takeCookie(Exchange& exchange) const {
  exchange.setHeader("Set-Cookie", std::string(cookieName) + "=; Path=/; Max-Age=0; HttpOnly; SameSite=Lax");
}

} // namespace ondrel::demo
