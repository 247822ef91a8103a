#pragma once

#include "async/EventLoop.h"
#include "async/Task.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <expected>
#include <functional>
#include <string>
#include <string_view>

namespace ondrel::platform::desktop {

// How an ability comes to its message bus. Null where there is none.
using BusConnector = std::function<async::Task<glib::Ref<GDBusConnection>>()>;

async::Task<glib::Ref<GDBusConnection>> sessionBus();
// Where an application has its own object: "org.velmora.Ondrel" at "/org/velmora/Ondrel".
std::string objectPath(std::string_view applicationId);
// The program outlives the end of this one.
async::Task<glib::Ref<GDBusConnection>> systemBus();

// A reply, which may be of the type error, or a text for the log when none came.
using BusAnswer = std::expected<glib::Ref<GDBusMessage>, std::string>;

// Makes a method call. `seen` gets the reply before any later message of the bus is handled, and gets it also
// when nobody waits any more.
async::Task<BusAnswer> callBus(glib::Ref<GDBusConnection> connection, glib::Ref<GDBusMessage> call,
                               async::Duration limit, std::move_only_function<void(GDBusMessage*)> seen = {});

// Makes a call whose answer nobody waits for, and which starts no service.
void tellBus(const glib::Ref<GDBusConnection>& connection, const glib::Ref<GDBusMessage>& call);

bool isError(const glib::Ref<GDBusMessage>& reply);
// An error reply as one bounded line for the log.
std::string errorText(const glib::Ref<GDBusMessage>& reply);
// The arguments of a reply when they are of that type, else null. The message keeps them.
GVariant* argumentsOf(GDBusMessage* reply, const char* type);

// Hears the signals of one interface at one object until it dies; those of one name, or all of them when
// `member` is null. Anybody on the bus can send such signals:
// the handler gets the sender's unique name, for which the bus vouches.
class [[nodiscard]] BusSubscription {
 public:
  using Handler =
      std::function<void(const std::string& sender, const std::string& member, GVariant* arguments)>;

  BusSubscription() = default;
  BusSubscription(glib::Ref<GDBusConnection> connection, const char* interface, const char* member,
                  const char* path, Handler handler);
  BusSubscription(BusSubscription&& other) noexcept { *this = std::move(other); }
  BusSubscription& operator=(BusSubscription&& other) noexcept;
  ~BusSubscription() { end(); }

 private:
  void end();

  glib::Ref<GDBusConnection> connection_;
  guint id_ = 0;
};

// Tells the unique name of whoever owns a name, now and at each change; an empty text for nobody.
class [[nodiscard]] BusNameWatch {
 public:
  using Handler = std::function<void(const std::string& owner)>;

  BusNameWatch() = default;
  BusNameWatch(const glib::Ref<GDBusConnection>& connection, const char* name, Handler handler);
  BusNameWatch(BusNameWatch&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
  BusNameWatch& operator=(BusNameWatch&& other) noexcept;
  ~BusNameWatch() { end(); }

 private:
  void end();

  guint id_ = 0;
};

} // namespace ondrel::platform::desktop
