#include "demo/FaultGate.h"

#include "demo/Exchange.h"

#include <fmt/core.h>
#include <sys/socket.h>

namespace ondrel::demo {

namespace {

void closeConnection(SoupServerMessage* message) {
  // The server's own writes then fail, and it forgets the connection by itself.
  if (GSocket* socket = soup_server_message_get_socket(message))
    g_socket_shutdown(socket, TRUE, TRUE, nullptr);
}

bool clientHasGone(SoupServerMessage* message) {
  GSocket* socket = soup_server_message_get_socket(message);
  char next = 0;
  return !socket || recv(g_socket_get_fd(socket), &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

std::string hugeJson() {
  std::string text = R"({"methodResponses":[["Email/get",{"state":"0","notFound":[],"list":[{"id":"0")";
  while (text.size() < 50'000'000)
    text += R"(},{"id":"M1","subject":"The same again, and no end of it")";
  return text + R"(}]},"0"]]})";
}

std::string firstHalf(SoupServerMessage* message) {
  const BytesPtr whole(soup_message_body_flatten(soup_server_message_get_response_body(message)));
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(whole.get(), &size));
  return {bytes ? bytes : "", size / 2};
}

} // namespace

FaultGate::~FaultGate() {
  for (const auto& held : held_)
    if (held.timer)
      g_source_remove(held.timer);
}

void FaultGate::pass(SoupServerMessage* message) {
  const auto kept = share(message); // also when the handler takes its connection away
  Exchange exchange(message);
  const auto fault = plan_.take(exchange.path());
  if (!fault) {
    next_(message);
    return;
  }
  switch (fault->kind) {
  case Fault::Kind::status:
    if (fault->delay.count() > 0) {
      hold(message, fault->delay, fault->status);
      return;
    }
    exchange.refuse(fault->status, "Fault on demand.");
    return;
  case Fault::Kind::close:
    closeConnection(message);
    return;
  case Fault::Kind::silence:
    hold(message, std::nullopt);
    return;
  case Fault::Kind::delay:
    hold(message, fault->delay);
    return;
  case Fault::Kind::body:
    exchange.reply(fault->status, fault->contentType.c_str(), fault->body);
    return;
  case Fault::Kind::huge:
    exchange.reply(SOUP_STATUS_OK, "application/json", hugeJson());
    return;
  case Fault::Kind::redirect:
    exchange.redirect(fault->location);
    soup_server_message_set_status(message, fault->status, nullptr);
    return;
  case Fault::Kind::truncated:
    next_(message);
    truncate(message);
    return;
  case Fault::Kind::cut:
    next_(message);
    cut(message);
    return;
  }
}

void FaultGate::dropHeld() {
  while (!held_.empty()) {
    auto& held = held_.front();
    if (held.timer)
      g_source_remove(held.timer);
    closeConnection(held.message.get());
    soup_server_message_unpause(held.message.get());
    held_.pop_front();
  }
}

void FaultGate::hold(SoupServerMessage* message, std::optional<std::chrono::milliseconds> delay,
                     unsigned status) {
  soup_server_message_pause(message);
  auto& held = held_.emplace_back(Held{this, share(message), 0, status});
  if (delay) {
    held.timer = g_timeout_add(
        static_cast<guint>(delay->count()),
        [](gpointer data) -> gboolean {
          auto* node = static_cast<Held*>(data);
          node->gate->letGo(node);
          return G_SOURCE_REMOVE;
        },
        &held);
  }
}

void FaultGate::letGo(Held* held) {
  const auto message = std::move(held->message);
  const auto status = held->status;
  held_.remove_if([&](const Held& other) { return &other == held; });
  if (clientHasGone(message.get())) {
    closeConnection(message.get()); // a slow request that was called off has never arrived
    soup_server_message_unpause(message.get());
    return;
  }
  if (status != 0)
    Exchange(message.get()).refuse(status, "Fault on demand.");
  else
    next_(message.get());
  if (soup_server_message_get_status(message.get()) != 0) // else the handler has taken the connection
    soup_server_message_unpause(message.get());
}

void FaultGate::truncate(SoupServerMessage* message) {
  const auto half = firstHalf(message);
  soup_message_body_truncate(soup_server_message_get_response_body(message));
  soup_message_body_append(soup_server_message_get_response_body(message), SOUP_MEMORY_COPY, half.data(),
                           half.size());
}

void FaultGate::cut(SoupServerMessage* message) {
  if (soup_server_message_get_status(message) == 0)
    return; // a connection that was taken has no answer to cut
  const auto head = fmt::format(
      "HTTP/1.1 {} Cut\r\nContent-Type: application/json\r\nContent-Length: {}\r\n\r\n",
      soup_server_message_get_status(message), soup_server_message_get_response_body(message)->length);
  const auto half = firstHalf(message);
  auto& connection = cut_.emplace_back(std::make_unique<TakenConnection>(message));
  connection->onClosed([this, taken = connection.get()] {
    cut_.remove_if([&](const auto& other) { return other.get() == taken; });
  });
  connection->send(head + half);
  connection->finish();
}

} // namespace ondrel::demo
