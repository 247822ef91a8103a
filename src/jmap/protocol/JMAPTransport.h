#pragma once

#include "async/Task.h"
#include "base/Log.h"
#include "jmap/protocol/JMAPClient.h"
#include "platform/HttpClient.h"

#include <boost/json/object.hpp>

#include <functional>
#include <string>
#include <string_view>

namespace ondrel::platform {
class CookieStore;
}

namespace ondrel::jmap {

// A cookie's domain covers a host: with a leading dot the bare host and all its sub-hosts, without one that
// host alone. Letters' case counts.
bool cookieMatchesHost(std::string_view domain, std::string_view host);

// The program's one way of sending requests to the service's API. Main thread only.
class JMAPTransport {
 public:
  using TokenSource = std::function<async::Task<Result<std::string>>()>;
  // Makes the request of an attempt, counted from 0.
  using RequestBuilder = std::function<async::Task<Result<platform::HttpRequest>>(int attempt)>;

  static constexpr int callAttempts = 5;

  // All outlive it.
  JMAPTransport(platform::HttpClient& http, platform::CookieStore& cookies, TokenSource token);

  // A GET with the user's authorization, and those cookies of the web views that belong to the host.
  async::Task<platform::HttpRequest> authorizedRequest(std::string url, std::string token);
  // A POST of the body to the session's apiUrl: with the given token at attempt 0, with a fresh one later.
  async::Task<Result<platform::HttpRequest>>
  makeJMAPRequest(int attempt, std::string token, JMAPSessionData session, boost::json::object body);
  // Sends until a reply is accepted, 800 ms apart; the last attempt's error where none is. What is wrong with
  // an attempt makes no difference. `attempts` is not negative.
  async::Task<Result<JMAPReply>> sendWithRetry(int attempts, RequestBuilder build);

 private:
  async::Task<Result<JMAPReply>> attempt(int index, const RequestBuilder& build);

  base::Logger logger_{"network"};
  platform::HttpClient& http_;
  platform::CookieStore& cookies_;
  TokenSource token_;
};

} // namespace ondrel::jmap
