#include "demo/http/SignIn.h"

#include "platform/linux/glib/Ref.h"

namespace ondrel::demo::http {

void SignIn::giveCookie(Exchange& exchange) const {
  exchange.setHeader("Set-Cookie", cookie() + "; Path=/; Max-Age=31536000; HttpOnly; SameSite=Lax");
}

void SignIn::signOut(Exchange& exchange) {
  exchange.setHeader("Set-Cookie", cookie() + "; Path=/; Max-Age=0; HttpOnly; SameSite=Lax");
  expireToken();
}

void SignIn::signOutEverybody() {
  ++generation_;
  expireToken();
}

const std::string& SignIn::token() {
  if (token_.empty())
    token_ = std::string("demo-") + glib::CString(g_uuid_string_random()).get();
  return token_;
}

} // namespace ondrel::demo::http
