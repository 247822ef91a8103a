#include "platform/linux/webkit/WebKitCookieStore.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/text/SafeText.h"

namespace ondrel::platform::webkit {

namespace {

std::string text(const char* value) {
  return text::validUtf8(value ? value : "");
}

Cookie cookieFrom(SoupCookie* cookie) {
  return {text(soup_cookie_get_name(cookie)),      text(soup_cookie_get_value(cookie)),
          text(soup_cookie_get_domain(cookie)),    text(soup_cookie_get_path(cookie)),
          soup_cookie_get_secure(cookie) != FALSE, soup_cookie_get_http_only(cookie) != FALSE};
}

// Takes no `this`: the store may go while the network process answers.
async::Task<std::vector<Cookie>> fetch(glib::Ref<WebKitCookieManager> manager) {
  std::vector<Cookie> cookies;
  auto [pending, future] = glib::startAsync();
  webkit_cookie_manager_get_all_cookies(manager.get(), pending.cancellable, glib::PendingCall::callback,
                                        pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return cookies;
  auto* list = webkit_cookie_manager_get_all_cookies_finish(manager.get(), result->get(), nullptr);
  for (auto* item = list; item; item = item->next)
    cookies.push_back(cookieFrom(static_cast<SoupCookie*>(item->data)));
  g_list_free_full(list, [](gpointer cookie) { soup_cookie_free(static_cast<SoupCookie*>(cookie)); });
  co_return cookies;
}

} // namespace

WebKitCookieStore::WebKitCookieStore(WebKitNetworkSession* session)
    : manager_(glib::share(webkit_network_session_get_cookie_manager(session))) {
}

async::Task<std::vector<Cookie>> WebKitCookieStore::allCookies() {
  return fetch(manager_);
}

} // namespace ondrel::platform::webkit
