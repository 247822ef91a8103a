#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/glib/AsyncResult.h"
#include "support/TestBus.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

namespace ondrel::platform {

// Abilities on a real message bus of the test's own, with the program's delays in virtual time: it moves only
// by loop.advance().
class BusTest : public testing::Test {
 protected:
  ~BusTest() override { turn(); }

  // Everything that is ready now.
  void turn() {
    do
      loop.runUntilIdle();
    while (g_main_context_iteration(nullptr, FALSE));
  }
  bool until(const std::function<bool()>& holds) {
    const auto end = g_get_monotonic_time() + 10 * G_USEC_PER_SEC;
    for (turn(); !holds(); turn()) {
      if (g_get_monotonic_time() > end)
        return false;
      g_usleep(500);
    }
    return true;
  }

  template <class T>
  std::optional<T> result(async::Task<T> task) {
    std::optional<T> value;
    start(std::move(task), value);
    until([&] { return value.has_value(); });
    return value;
  }
  template <class T>
  void start(async::Task<T> task, std::optional<T>& value) {
    scope.spawn(store(std::move(task), &value));
  }

  // How the ability under test comes to a bus.
  desktop::BusConnector connector() {
    return [this] { return connectTo(bus.address(), &connection); };
  }
  static desktop::BusConnector connectorTo(std::string address) {
    return [address = std::move(address)] { return connectTo(address, nullptr); };
  }
  // The ability has heard all that the bus has for it.
  void hear() {
    if (!g_dbus_connection_is_closed(connection.get()))
      support::TestBus::roundTrip(connection);
    turn();
  }

  async::VirtualEventLoop loop;
  support::TestBus bus;
  glib::Ref<GDBusConnection> connection; // of the ability
  async::Scope scope;

 private:
  static async::Task<glib::Ref<GDBusConnection>> connectTo(std::string address,
                                                           glib::Ref<GDBusConnection>* made) {
    auto [pending, result] = glib::startAsync();
    g_dbus_connection_new_for_address(address.c_str(), support::TestBus::flags, nullptr, pending.cancellable,
                                      glib::PendingCall::callback, pending.userData);
    const auto finished = co_await std::move(result);
    if (!finished)
      co_return nullptr;
    auto connected = glib::adopt(g_dbus_connection_new_for_address_finish(finished->get(), nullptr));
    if (made)
      *made = connected;
    co_return connected;
  }
  template <class T>
  static async::Task<void> store(async::Task<T> task, std::optional<T>* value) {
    auto got = co_await std::move(task);
    value->emplace(std::move(got));
  }
};

} // namespace ondrel::platform
