#include "platform/linux/desktop/OwnedBusName.h"

#include <memory>
#include <utility>

namespace ondrel::platform::desktop {

namespace {

using Handler = OwnedBusName::Handler;

void tell(gpointer data, bool owned) {
  const auto handler = *static_cast<std::shared_ptr<Handler>*>(data); // alive, whatever it ends
  (*handler)(owned);
}

} // namespace

OwnedBusName::OwnedBusName(const glib::Ref<GDBusConnection>& connection, const char* name, Handler handler)
    : id_(g_bus_own_name_on_connection(
          connection.get(), name, G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE,
          [](GDBusConnection*, const char*, gpointer data) { tell(data, true); },
          [](GDBusConnection*, const char*, gpointer data) { tell(data, false); },
          new std::shared_ptr<Handler>(std::make_shared<Handler>(std::move(handler))),
          [](gpointer data) { delete static_cast<std::shared_ptr<Handler>*>(data); })) {
}

OwnedBusName& OwnedBusName::operator=(OwnedBusName&& other) noexcept {
  end();
  id_ = std::exchange(other.id_, 0);
  return *this;
}

void OwnedBusName::end() {
  if (const auto id = std::exchange(id_, 0))
    g_bus_unown_name(id);
}

} // namespace ondrel::platform::desktop
