#pragma once

#include "platform/HttpClient.h"
#include "platform/linux/glib/Ref.h"
#include "platform/linux/network/MemoryReturn.h"

#include <libsoup/soup.h>

#include <cstddef>
#include <memory>
#include <string>

namespace ondrel::platform::network {

struct SoupHttpClientOptions {
  std::string userAgent; // "Ondrel/1.0"
  std::size_t largestBody = HttpClient::largestBody;
};

// HTTP by libsoup, through the proxies of the desktop. The body that send() gives is decoded, and its limit
// holds for the decoded bytes; the body of a stream is as the server sent it. Connections are kept for
// requests that may be repeated (GET, PUT and the like); a POST always has a connection of its own, so that
// it is neither lost nor sent twice when the server closes a kept one at that moment.
class SoupHttpClient final : public HttpClient {
 public:
  // Machines out there by the desktop's proxies, this one by none.
  struct Sessions {
    glib::Ref<SoupSession> remote;
    glib::Ref<SoupSession> loopback;
  };

  explicit SoupHttpClient(const SoupHttpClientOptions& options);

  async::Task<HttpResult<HttpResponse>> send(HttpRequest request) override;
  async::Task<HttpResult<std::unique_ptr<HttpStream>>> open(HttpRequest request) override;

 private:
  Sessions sessions_;
  std::size_t largestBody_;
  std::shared_ptr<MemoryReturn> memory_ = std::make_shared<MemoryReturn>();
};

} // namespace ondrel::platform::network
