#include "Client.h"

#include <stdexcept>

namespace ondrel::demo {

Call::Call(const Request& request)
    : session_(soup_session_new()), message_(soup_message_new(request.method.c_str(), request.url.c_str())) {
  if (!message_)
    throw std::invalid_argument("no URL: " + request.url);
  soup_message_add_flags(message_.get(), SOUP_MESSAGE_NO_REDIRECT);
  for (const auto& [name, value] : request.headers) {
    soup_message_headers_replace(soup_message_get_request_headers(message_.get()), name.c_str(),
                                 value.c_str());
  }
  if (!request.body.empty()) {
    const BytesPtr body(g_bytes_new(request.body.data(), request.body.size()));
    soup_message_set_request_body_from_bytes(message_.get(), nullptr, body.get());
  }
  soup_session_send_and_read_async(session_.get(), message_.get(), G_PRIORITY_DEFAULT, nullptr, finish, this);
}

Call::~Call() {
  soup_session_abort(session_.get());
  wait();
}

const Answer& Call::wait() {
  while (!isDone_)
    g_main_context_iteration(nullptr, TRUE);
  return answer_;
}

void Call::finish(GObject* session, GAsyncResult* result, gpointer call) {
  auto* self = static_cast<Call*>(call);
  GError* raw = nullptr;
  const BytesPtr bytes(soup_session_send_and_read_finish(SOUP_SESSION(session), result, &raw));
  if (const ErrorPtr error(raw); error) {
    self->answer_.error = error->message;
  } else {
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    self->answer_.body.assign(data ? data : "", size);
    self->answer_.status = soup_message_get_status(self->message_.get());
    soup_message_headers_foreach(
        soup_message_get_response_headers(self->message_.get()),
        [](const char* name, const char* value, gpointer map) {
          const StringPtr lower(g_ascii_strdown(name, -1));
          (*static_cast<std::map<std::string, std::string>*>(map))[lower.get()] = value;
        },
        &self->answer_.headers);
  }
  self->isDone_ = true;
}

} // namespace ondrel::demo
