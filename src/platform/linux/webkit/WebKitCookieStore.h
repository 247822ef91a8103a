#pragma once

#include "platform/CookieStore.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

class WebKitCookieStore final : public CookieStore {
 public:
  explicit WebKitCookieStore(WebKitNetworkSession* session);
  async::Task<std::vector<Cookie>> allCookies() override;

 private:
  glib::Ref<WebKitCookieManager> manager_;
};

} // namespace ondrel::platform::webkit
