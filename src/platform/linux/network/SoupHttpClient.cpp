#include "platform/linux/network/SoupHttpClient.h"

#include "base/Translation.h"
#include "platform/linux/network/SoupHttpClientRules.h"
#include "platform/linux/network/SoupHttpClientTransfer.h"

#include <algorithm>
#include <utility>

namespace ondrel::platform::network {

namespace {

using Transfer = SoupHttpClientTransfer;

constexpr int mostRedirects = 20;

glib::Ref<SoupSession> makeSession(const std::string& userAgent) {
  // Times are limited by the program's own clock; a stream may be silent for as long as it likes. It takes
  // one of a host's connections for good, so that the usual two are too few.
  auto session = glib::adopt(SOUP_SESSION(
      g_object_new(SOUP_TYPE_SESSION, "timeout", 0U, "max-conns", 32, "max-conns-per-host", 8, nullptr)));
  soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_AUTH_MANAGER);
  soup_session_set_user_agent(session.get(), userAgent.c_str());
  return session;
}

// The coroutines take no `this`: the client may go while they wait.

async::Task<Transfer::Started> follow(SoupHttpClient::Sessions sessions, HttpRequest request,
                                      Transfer::Encoding encoding) {
  for (int hop = 0; hop <= mostRedirects; ++hop) {
    auto address = checkedAddress(request);
    if (!address)
      co_return std::unexpected(address.error());
    const auto session = isLoopback(address->get()) ? sessions.loopback : sessions.remote;
    auto started = co_await Transfer::start(session, request, std::move(*address), encoding);
    if (!started || !isRedirect((*started)->status()))
      co_return started;
    const auto location = headerValue((*started)->headers(), "Location");
    if (!location)
      co_return started;
    auto next = redirected(std::move(request), (*started)->status(), *location);
    if (!next)
      co_return std::unexpected(next.error());
    request = std::move(*next);
  }
  co_return std::unexpected(WebError{WebError::Domain::network, WebError::badServerResponse,
                                     base::trMark("The server redirects too many times.")});
}

std::unexpected<WebError> tooLarge() {
  return std::unexpected(WebError{WebError::Domain::network, WebError::badServerResponse,
                                  base::trMark("The response is too large.")});
}

async::Task<HttpResult<HttpResponse>> fetch(SoupHttpClient::Sessions sessions, HttpRequest request,
                                            std::size_t largest, std::shared_ptr<MemoryReturn> memory) {
  const auto limit = request.timeout;
  largest = std::min(largest, request.largestBody.value_or(largest));
  const auto started = co_await follow(std::move(sessions), std::move(request), Transfer::Encoding::decoded);
  if (!started)
    co_return std::unexpected(started.error());
  const auto transfer = *started;
  if (std::cmp_greater(transfer->announcedLength().value_or(0), largest))
    co_return tooLarge();
  HttpResponse response{transfer->status(), transfer->headers()};
  while (true) {
    const auto bytes = co_await Transfer::read(transfer, limit);
    if (!bytes)
      co_return std::unexpected(bytes.error());
    if (bytes->empty()) {
      memory->note(response.body.size());
      co_return response;
    }
    if (bytes->size() > largest - response.body.size())
      co_return tooLarge();
    response.body += *bytes;
  }
}

// A server sends each event by itself; a turn of the main loop for each would be dear when many come at once.
async::Task<HttpResult<std::string>> readAvailable(std::shared_ptr<Transfer> transfer,
                                                   std::optional<async::Duration> limit) {
  auto bytes = co_await Transfer::read(transfer, limit);
  if (bytes && !bytes->empty())
    transfer->readArrived(*bytes);
  co_return bytes;
}

class Stream final : public HttpStream {
 public:
  Stream(std::shared_ptr<Transfer> transfer, std::optional<async::Duration> limit)
      : transfer_(std::move(transfer)), limit_(limit) {}
  ~Stream() override { transfer_->end(); } // a reader may hold the transfer too

  int status() const override { return transfer_->status(); }
  std::optional<std::int64_t> length() const override { return transfer_->announcedLength(); }
  async::Task<HttpResult<std::string>> read() override { return readAvailable(transfer_, limit_); }
  bool hasMore() const override { return transfer_->hasMore(); }

 private:
  std::shared_ptr<Transfer> transfer_;
  std::optional<async::Duration> limit_; // of a wait
};

async::Task<HttpResult<std::unique_ptr<HttpStream>>> openStream(SoupHttpClient::Sessions sessions,
                                                                HttpRequest request) {
  const auto limit = request.bodyTimeout;
  auto started = co_await follow(std::move(sessions), std::move(request), Transfer::Encoding::asSent);
  if (!started)
    co_return std::unexpected(started.error());
  co_return std::make_unique<Stream>(std::move(*started), limit);
}

} // namespace

SoupHttpClient::SoupHttpClient(const SoupHttpClientOptions& options)
    : sessions_{makeSession(options.userAgent), makeSession(options.userAgent)},
      largestBody_(options.largestBody) {
  soup_session_set_proxy_resolver(sessions_.loopback.get(), nullptr);
}

async::Task<HttpResult<HttpResponse>> SoupHttpClient::send(HttpRequest request) {
  return fetch(sessions_, std::move(request), largestBody_, memory_);
}

async::Task<HttpResult<std::unique_ptr<HttpStream>>> SoupHttpClient::open(HttpRequest request) {
  return openStream(sessions_, std::move(request));
}

} // namespace ondrel::platform::network
