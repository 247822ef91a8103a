#include "platform/linux/network/SoupHttpClientTransfer.h"

#include "async/Timer.h"
#include "base/Translation.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/network/WebErrors.h"

namespace ondrel::platform::network {

namespace {

constexpr gsize chunkSize = gsize{64} << 10;

std::unexpected<WebError> failure(int code, const char* description) {
  return std::unexpected(WebError{WebError::Domain::network, code, description});
}

std::unexpected<WebError> cancelled() {
  return failure(WebError::cancelled, base::trMark("The request was cancelled."));
}

// Calls an operation off when nothing has happened for too long; the operation's callback then says
// cancelled.
class IdleLimit {
 public:
  IdleLimit(std::optional<async::Duration> limit, GCancellable* operation)
      : limit_(limit), operation_(glib::share(operation)) {
    restart();
  }
  IdleLimit(const IdleLimit&) = delete;
  IdleLimit& operator=(const IdleLimit&) = delete;

  void restart() {
    if (limit_)
      timer_ = async::Timer(*limit_, [this] {
        passed_ = true;
        g_cancellable_cancel(operation_.get());
      });
  }
  std::unexpected<WebError> failureFrom(const glib::Error& error) const {
    if (passed_)
      return failure(WebError::timedOut, base::trMark("The server did not answer in time."));
    return std::unexpected(webErrorFrom(*error.raw()));
  }

 private:
  std::optional<async::Duration> limit_;
  glib::Ref<GCancellable> operation_;
  bool passed_ = false;
  async::Timer timer_;
};

glib::Ref<SoupMessage> messageFrom(const HttpRequest& request, GUri* address,
                                   SoupHttpClientTransfer::Encoding encoding) {
  auto message = glib::adopt(soup_message_new_from_uri(request.method.c_str(), address));
  soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
  if (encoding == SoupHttpClientTransfer::Encoding::asSent)
    soup_message_disable_feature(message.get(), SOUP_TYPE_CONTENT_DECODER);
  if (!request.body.empty() || (request.method != "GET" && request.method != "HEAD")) {
    const glib::Owned<GBytes> body(g_bytes_new(request.body.data(), request.body.size()));
    soup_message_set_request_body_from_bytes(message.get(), nullptr, body.get());
  }
  auto* headers = soup_message_get_request_headers(message.get());
  for (const auto& [name, value] : request.headers)
    soup_message_headers_append(headers, name.c_str(), value.c_str());
  return message;
}

} // namespace

SoupHttpClientTransfer::SoupHttpClientTransfer(glib::Ref<SoupMessage> message, glib::Ref<GInputStream> body)
    : message_(std::move(message)), body_(std::move(body)) {
}

async::Task<SoupHttpClientTransfer::Started> SoupHttpClientTransfer::start(glib::Ref<SoupSession> session,
                                                                           HttpRequest request,
                                                                           glib::Owned<GUri> address,
                                                                           Encoding encoding) {
  const auto message = messageFrom(request, address.get(), encoding);
  auto [pending, future] = glib::startAsync();
  IdleLimit limit(request.timeout, pending.cancellable);
  const auto sent = glib::connect<void(SoupMessage*, guint)>(message.get(), "wrote-body-data",
                                                             [&limit](auto*, guint) { limit.restart(); });
  soup_session_send_async(session.get(), message.get(), G_PRIORITY_DEFAULT, pending.cancellable,
                          glib::PendingCall::callback, pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return cancelled();
  glib::Error error;
  auto body = glib::adopt(soup_session_send_finish(session.get(), result->get(), error.out()));
  if (!body)
    co_return limit.failureFrom(error);
  co_return std::make_shared<SoupHttpClientTransfer>(message, std::move(body));
}

async::Task<HttpResult<std::string>>
SoupHttpClientTransfer::read(std::shared_ptr<SoupHttpClientTransfer> self,
                             std::optional<async::Duration> limit) {
  const auto body = self->body_;
  if (!body)
    co_return cancelled();
  if (self->failure_) {
    self->end();
    co_return std::unexpected(*self->failure_);
  }
  auto [pending, future] = glib::startAsync();
  const IdleLimit idle(limit, pending.cancellable);
  self->reading_ = glib::share(pending.cancellable);
  g_input_stream_read_bytes_async(body.get(), chunkSize, G_PRIORITY_DEFAULT, pending.cancellable,
                                  glib::PendingCall::callback, pending.userData);
  const auto result = co_await std::move(future);
  self->reading_ = nullptr;
  if (!result || !self->body_) {
    self->end();
    co_return cancelled();
  }
  glib::Error error;
  const glib::Owned<GBytes> bytes(g_input_stream_read_bytes_finish(body.get(), result->get(), error.out()));
  if (!bytes) {
    self->end();
    co_return idle.failureFrom(error);
  }
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
  self->received_ += static_cast<goffset>(size);
  // libsoup lets a body that is too short pass where the connection was to be closed behind it.
  if (size == 0 && self->received_ < self->announcedLength().value_or(0))
    co_return failure(WebError::networkConnectionLost,
                      base::trMark("The connection ended in the middle of the response."));
  co_return std::string(data, size);
}

GPollableInputStream* SoupHttpClientTransfer::pollableBody() const {
  if (!body_ || !G_IS_POLLABLE_INPUT_STREAM(body_.get()))
    return nullptr;
  auto* body = G_POLLABLE_INPUT_STREAM(body_.get());
  return g_pollable_input_stream_can_poll(body) ? body : nullptr;
}

bool SoupHttpClientTransfer::hasMore() const {
  auto* body = pollableBody();
  return body && g_pollable_input_stream_is_readable(body);
}

void SoupHttpClientTransfer::readArrived(std::string& bytes) {
  auto* body = pollableBody();
  if (!body)
    return;
  auto size = bytes.size();
  bytes.resize(chunkSize);
  while (size < chunkSize) {
    glib::Error error;
    const auto got = g_pollable_input_stream_read_nonblocking(body, bytes.data() + size, chunkSize - size,
                                                              nullptr, error.out());
    if (got < 0 && !error.matches(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK))
      failure_ = webErrorFrom(*error.raw());
    if (got <= 0)
      break;
    size += static_cast<std::size_t>(got);
    received_ += got;
  }
  bytes.resize(size);
}

int SoupHttpClientTransfer::status() const {
  return static_cast<int>(soup_message_get_status(message_.get()));
}

HttpHeaders SoupHttpClientTransfer::headers() const {
  HttpHeaders headers;
  soup_message_headers_foreach(
      soup_message_get_response_headers(message_.get()),
      [](const char* name, const char* value, gpointer data) {
        static_cast<HttpHeaders*>(data)->emplace_back(name, value);
      },
      &headers);
  return headers;
}

std::optional<goffset> SoupHttpClientTransfer::announcedLength() const {
  auto* headers = soup_message_get_response_headers(message_.get());
  // The length of an encoded body is not the one that is read here, and of these there is none.
  if (soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CONTENT_LENGTH ||
      soup_message_headers_get_one(headers, "Content-Encoding") || status() == 204 || status() == 304 ||
      std::string_view(soup_message_get_method(message_.get())) == "HEAD")
    return std::nullopt;
  return soup_message_headers_get_content_length(headers);
}

void SoupHttpClientTransfer::end() {
  if (const auto reading = std::exchange(reading_, nullptr))
    g_cancellable_cancel(reading.get());
  // Closes the connection, unless the body was read to its end; a read under way does so when it comes back.
  body_ = nullptr;
}

} // namespace ondrel::platform::network
