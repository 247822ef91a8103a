#pragma once

#include "async/EventLoop.h"
#include "async/Task.h"
#include "platform/WebError.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ondrel::platform {

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

// The value of the first header of that name, letters' case aside.
std::optional<std::string> headerValue(const HttpHeaders& headers, std::string_view name);

struct HttpRequest {
  std::string method = "GET";
  std::string url; // absolute, http or https
  HttpHeaders headers = {};
  std::string body = {};
  // How long nothing may arrive or leave; for a stream, how long its response head may take.
  async::Duration timeout = std::chrono::seconds(60);
  // Of a stream: how long nothing of its body may arrive; absent for one that may be silent.
  std::optional<async::Duration> bodyTimeout = {};
  // For what needs little: a larger body fails as one that is larger than the client takes at all.
  std::optional<std::size_t> largestBody = {};
  bool staysAtOrigin = false; // a redirect to another one fails
};

struct HttpResponse {
  int status = 0;
  HttpHeaders headers = {};
  std::string body = {};
};

template <class T>
using HttpResult = std::expected<T, WebError>;

// The body of a response while it arrives. Destroying it ends the transfer.
class HttpStream {
 public:
  virtual ~HttpStream() = default;
  virtual int status() const = 0;
  // The length of the whole body in bytes, where the server tells it.
  virtual std::optional<std::int64_t> length() const = 0;
  // Waits for the next bytes, no longer than the request's bodyTimeout; empty at the end of the body.
  virtual async::Task<HttpResult<std::string>> read() = 0;
  // Whether more has arrived already, as far as that is known.
  virtual bool hasMore() const { return false; }
};

// Requests over HTTP. It keeps no cookies, caches nothing and adds no credentials. Redirects are followed, 20
// at most: to another origin Authorization and Cookie don't go along, and a body never does. A request that
// carries Authorization or Cookie is refused unless it is https or goes to this machine. Certificates that
// can't be trusted fail. Errors are of WebError::Domain::network, and their descriptions hold no header and
// no body. Main thread only; dropping a task ends its request.
class HttpClient {
 public:
  // A larger body fails with badServerResponse.
  static constexpr std::size_t largestBody = std::size_t{64} << 20;

  virtual ~HttpClient() = default;
  virtual async::Task<HttpResult<HttpResponse>> send(HttpRequest request) = 0;
  virtual async::Task<HttpResult<std::unique_ptr<HttpStream>>> open(HttpRequest request) = 0;
};

} // namespace ondrel::platform
