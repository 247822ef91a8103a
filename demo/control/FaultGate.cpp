#include "demo/control/FaultGate.h"

#include "demo/http/Exchange.h"
#include "demo/http/Stream.h"

namespace ondrel::demo::control {

namespace {

// The server's own writes then fail, and it forgets the connection by itself.
void closeConnection(SoupServerMessage* message) {
  if (GSocket* socket = soup_server_message_get_socket(message))
    g_socket_shutdown(socket, TRUE, TRUE, nullptr);
}

} // namespace

void FaultGate::pass(SoupServerMessage* message) {
  const auto fault = plan_.take(http::Exchange(message).path());
  if (!fault) {
    next_(message);
    return;
  }
  soup_server_message_pause(message);
  auto& held = held_.emplace_back(Held{glib::share(message), *fault});
  if (fault->kind != Fault::Kind::silence)
    held.timer = async::Timer(fault->delay, [this, &held] { letGo(held); });
}

void FaultGate::letGo(const Held& held) {
  const auto message = held.message;
  const auto fault = held.fault;
  held_.remove_if([&](const Held& other) { return &other == &held; });
  // A slow request that was called off has never arrived.
  if (fault.kind == Fault::Kind::close || http::clientHasGone(message.get()))
    closeConnection(message.get());
  else if (fault.kind == Fault::Kind::delay)
    next_(message.get());
  else
    http::Exchange(message.get()).reply(fault.status, "application/json", fault.body);
  soup_server_message_unpause(message.get());
}

void FaultGate::dropHeld() {
  for (const auto& held : std::exchange(held_, {})) {
    closeConnection(held.message.get());
    soup_server_message_unpause(held.message.get());
  }
}

} // namespace ondrel::demo::control
