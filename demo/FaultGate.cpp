#include "demo/FaultGate.h"

#include "demo/Exchange.h"

namespace ondrel::demo {

namespace {

void closeConnection(SoupServerMessage* message) {
  // The server's own writes then fail, and it forgets the connection by itself.
  if (GSocket* socket = soup_server_message_get_socket(message)) {
    g_socket_shutdown(socket, TRUE, TRUE, nullptr);
  }
}

} // namespace

FaultGate::~FaultGate() {
  for (const auto& held : held_) {
    if (held.timer) {
      g_source_remove(held.timer);
    }
  }
}

void FaultGate::pass(SoupServerMessage* message) {
  Exchange exchange(message);
  const auto fault = plan_.take(exchange.path());
  if (!fault) {
    next_(message);
    return;
  }
  switch (fault->kind) {
  case Fault::Kind::Status:
    exchange.refuse(fault->status, "Fault on demand.");
    return;
  case Fault::Kind::Close:
    closeConnection(message);
    return;
  case Fault::Kind::Silence:
    hold(message, std::nullopt);
    return;
  case Fault::Kind::Delay:
    hold(message, fault->delay);
    return;
  }
}

void FaultGate::dropHeld() {
  while (!held_.empty()) {
    auto& held = held_.front();
    if (held.timer) {
      g_source_remove(held.timer);
    }
    closeConnection(held.message.get());
    soup_server_message_unpause(held.message.get());
    held_.pop_front();
  }
}

void FaultGate::hold(SoupServerMessage* message, std::optional<std::chrono::milliseconds> delay) {
  soup_server_message_pause(message);
  auto& held = held_.emplace_back(Held{this, share(message)});
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
  held_.remove_if([&](const Held& other) { return &other == held; });
  next_(message.get());
  soup_server_message_unpause(message.get());
}

} // namespace ondrel::demo
