#pragma once

#include <libsoup/soup.h>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::support {

// A web server for pages of a test, on a loopback port of its own. The same pages have several origins: those
// of 127.0.0.1, of localhost and of every name under localhost.
class PageServer {
 public:
  struct Page {
    std::string body;
    std::string type = "text/html; charset=utf-8";
    std::vector<std::pair<std::string, std::string>> headers = {};
    unsigned status = 200;
    bool stalls = false; // after the body, without an end
  };

  PageServer() : server_(soup_server_new(nullptr, nullptr)) {
    soup_server_add_handler(server_, nullptr, handle, this, nullptr);
    if (!soup_server_listen_local(server_, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr))
      throw std::runtime_error("no port to listen on");
    auto* uris = soup_server_get_uris(server_);
    port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
    g_slist_free_full(uris, [](gpointer uri) { g_uri_unref(static_cast<GUri*>(uri)); });
  }
  PageServer(const PageServer&) = delete;
  PageServer& operator=(const PageServer&) = delete;
  ~PageServer() { g_object_unref(server_); }

  void serve(const std::string& path, Page page) { pages_[path] = std::move(page); }
  void serve(const std::string& path, const std::string& html) { pages_[path] = Page{html}; }

  std::string origin(const std::string& host = "127.0.0.1") const {
    return "http://" + host + ":" + std::to_string(port_);
  }
  std::string url(const std::string& path, const std::string& host = "127.0.0.1") const {
    return origin(host) + path;
  }
  // As a machine that can't be reached, and as itself again.
  void goOffline() { soup_server_disconnect(server_); }
  void goOnline() {
    if (!soup_server_listen_local(server_, static_cast<guint>(port_), SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr))
      throw std::runtime_error("the port is taken");
  }

  // How often a path was asked for.
  int requests(const std::string& path) const {
    const auto found = requests_.find(path);
    return found == requests_.end() ? 0 : found->second;
  }
  int totalRequests() const {
    int total = 0;
    for (const auto& [path, count] : requests_)
      total += count;
    return total;
  }

 private:
  static void handle(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer data) {
    auto* self = static_cast<PageServer*>(data);
    ++self->requests_[path];
    const auto found = self->pages_.find(path);
    const Page page =
        found == self->pages_.end() ? Page{"nothing here", "text/plain", {}, 404} : found->second;
    soup_server_message_set_status(message, page.status, nullptr);
    auto* headers = soup_server_message_get_response_headers(message);
    for (const auto& [name, value] : page.headers)
      soup_message_headers_append(headers, name.c_str(), value.c_str());
    if (page.stalls) {
      soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
      soup_message_headers_set_content_type(headers, page.type.c_str(), nullptr);
      soup_message_body_append(soup_server_message_get_response_body(message), SOUP_MEMORY_COPY,
                               page.body.data(), page.body.size());
      return;
    }
    soup_server_message_set_response(message, page.type.c_str(), SOUP_MEMORY_COPY, page.body.data(),
                                     page.body.size());
  }

  SoupServer* server_;
  int port_ = 0;
  std::map<std::string, Page> pages_;
  std::map<std::string, int> requests_;
};

} // namespace ondrel::support
