#pragma once

#include "platform/WebView.h"
#include "platform/linux/webkit/WebKitCookieStore.h"
#include "platform/linux/webkit/WebKitEngine.h"
#include "platform/linux/webkit/WebKitSpelling.h"

namespace ondrel::platform::webkit {

// Makes the web views of the program. One in a process. May go before the views that it made.
class WebKitViewFactory final : public WebViewFactory {
 public:
  explicit WebKitViewFactory(const WebKitOptions& options);
  ~WebKitViewFactory() override;

  std::shared_ptr<WebView> make(const std::vector<std::shared_ptr<const UserScript>>& scripts) override;
  std::shared_ptr<WebView> makeDocumentView() override;
  CookieStore& cookies() { return cookies_; }
  SpellChecker& spelling() { return spelling_; }

 private:
  std::shared_ptr<const WebKitEngine> engine_;
  WebKitCookieStore cookies_;
  WebKitSpelling spelling_;
};

} // namespace ondrel::platform::webkit
