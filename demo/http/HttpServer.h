#pragma once

#include "platform/linux/glib/Ref.h"

#include <libsoup/soup.h>

#include <cstdint>
#include <expected>
#include <functional>
#include <string>

namespace ondrel::demo::http {

// An HTTP server on the loopback addresses of both address families, driven by the main loop.
class HttpServer {
 public:
  using Handler = std::function<void(SoupServerMessage*)>;

  // Every request goes to `handler`, after its body has been read.
  explicit HttpServer(Handler handler);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // Port 0 takes a free one. The result is the port, or one line that says what went wrong.
  std::expected<std::uint16_t, std::string> listen(std::uint16_t port);

 private:
  Handler handler_;
  glib::Ref<SoupServer> server_;
};

} // namespace ondrel::demo::http
