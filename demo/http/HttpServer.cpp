#include "demo/http/HttpServer.h"

namespace ondrel::demo::http {

HttpServer::HttpServer(Handler handler)
    : handler_(std::move(handler)),
      server_(
          glib::adopt(soup_server_new("server-header", "ondrel-demo-service", "raw-paths", TRUE, nullptr))) {
  soup_server_add_handler(
      server_.get(), nullptr,
      [](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
        static_cast<HttpServer*>(self)->handler_(message);
      },
      this, nullptr);
}

HttpServer::~HttpServer() {
  soup_server_disconnect(server_.get());
}

std::expected<std::uint16_t, std::string> HttpServer::listen(std::uint16_t port) {
  glib::Error error;
  if (!soup_server_listen_local(server_.get(), port, SoupServerListenOptions(0), error.out()))
    return std::unexpected("cannot listen on port " + std::to_string(port) + ": " + error.message());
  GSList* uris = soup_server_get_uris(server_.get());
  const auto bound = static_cast<std::uint16_t>(g_uri_get_port(static_cast<GUri*>(uris->data)));
  g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
  return bound;
}

} // namespace ondrel::demo::http
