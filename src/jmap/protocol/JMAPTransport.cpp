#include "jmap/protocol/JMAPTransport.h"

#include "async/sleep.h"
#include "base/Json.h"
#include "base/JsonReader.h"
#include "base/Url.h"
#include "jmap/protocol/LogExcerpt.h"
#include "platform/CookieStore.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <cassert>

namespace ondrel::jmap {

namespace {

constexpr std::chrono::milliseconds retryPause{800};
constexpr std::chrono::seconds requestTimeout{60};

// A method-level error (RFC 8620, section 3.6.2) anywhere in the batch. What isn't shaped like a reply isn't
// an error reply either.
std::optional<JMAPError> errorReply(const Result<boost::json::value>& json) {
  const auto answers = json ? base::JsonReader(*json)["methodResponses"] : base::JsonReader();
  if (!answers.array() || !std::ranges::all_of(*answers.array(), &boost::json::value::is_array))
    return std::nullopt;
  for (const auto& answer : answers.elements())
    if (answer[0].string() == "error")
      return answer[1]["type"].string() == "serverUnavailable" ? JMAPError::rejected()
                                                               : JMAPError::badResponse();
  return std::nullopt;
}

bool hasControls(std::string_view text) {
  return std::ranges::any_of(text, [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

std::string cookieHeader(const std::vector<platform::Cookie>& cookies, std::string_view host) {
  std::string header;
  for (const auto& cookie : cookies) {
    // One that can't stand in a header must not cost the others.
    if (!cookieMatchesHost(cookie.domain, host) || hasControls(cookie.name) || hasControls(cookie.value))
      continue;
    if (!header.empty())
      header += "; ";
    header += cookie.name + "=" + cookie.value;
  }
  return header;
}

} // namespace

bool cookieMatchesHost(std::string_view domain, std::string_view host) {
  if (!domain.starts_with('.'))
    return domain == host;
  return host == domain.substr(1) || host.ends_with(domain);
}

JMAPTransport::JMAPTransport(platform::HttpClient& http, platform::CookieStore& cookies, TokenSource token)
    : http_(http), cookies_(cookies), token_(std::move(token)) {
}

async::Task<platform::HttpRequest> JMAPTransport::authorizedRequest(std::string url, std::string token) {
  const auto cookies = co_await cookies_.allCookies();
  const auto parsed = base::Url::parse(url);
  const auto header = cookieHeader(cookies, parsed ? parsed->host().value_or("") : "");

  platform::HttpRequest request{.url = std::move(url), .timeout = requestTimeout};
  request.headers.emplace_back("Authorization", "Bearer " + token);
  if (!header.empty())
    request.headers.emplace_back("Cookie", header);
  co_return request;
}

async::Task<Result<platform::HttpRequest>> JMAPTransport::makeJMAPRequest(int attempt, std::string token,
                                                                          JMAPSessionData session,
                                                                          boost::json::object body) {
  if (attempt > 0) {
    auto fresh = co_await token_();
    if (!fresh)
      co_return std::unexpected(std::move(fresh.error()));
    token = std::move(*fresh);
  }
  auto request = co_await authorizedRequest(std::move(session.apiUrl), std::move(token));
  request.method = "POST";
  request.headers.emplace_back("Content-Type", "application/json");
  request.body = base::jsonText(body);
  co_return request;
}

async::Task<Result<JMAPReply>> JMAPTransport::attempt(int index, const RequestBuilder& build) {
  auto request = co_await build(index);
  if (!request)
    co_return std::unexpected(std::move(request.error()));
  auto secrets = secretsOf(platform::headerValue(request->headers, "Authorization").value_or(""),
                           platform::headerValue(request->headers, "Cookie").value_or(""));
  auto response = co_await http_.send(std::move(*request));
  if (!response)
    co_return std::unexpected(JMAPError{JMAPError::Kind::transport, response.error().description});

  const int status = response->status;
  const bool isSuccess = status >= 200 && status <= 299;
  auto reply = isSuccess ? JMAPReply::of(std::move(response->body), std::move(secrets))
                         : JMAPReply{std::move(response->body), {}, std::move(secrets)};
  auto error = isSuccess && !reply.body.empty() ? errorReply(reply.json) : JMAPError::rejected();
  if (!error)
    co_return reply;
  logger_.error("JMAP request rejected — status: {}, body: {}", status, reply.excerpt());
  co_return std::unexpected(*std::move(error));
}

async::Task<Result<JMAPReply>> JMAPTransport::sendWithRetry(int attempts, RequestBuilder build) {
  assert(attempts >= 0);
  auto lastError = JMAPError::badResponse();
  for (int i = 0; i < attempts; ++i) {
    auto reply = co_await attempt(i, build);
    if (reply)
      co_return reply;
    if (co_await async::cancelled())
      co_return std::unexpected(JMAPError::cancelled());
    lastError = std::move(reply.error());
    logger_.error("JMAP request attempt {}/{} failed: {}", i + 1, attempts, lastError.description());
    if (i == attempts - 1)
      break;
    const bool slept = co_await async::sleep(retryPause);
    if (!slept)
      co_return std::unexpected(JMAPError::cancelled());
  }
  co_return std::unexpected(std::move(lastError));
}

} // namespace ondrel::jmap
