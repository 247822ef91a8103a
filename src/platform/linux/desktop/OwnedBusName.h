#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <functional>

namespace ondrel::platform::desktop {

// A name on a bus that is the program's for as long as this lives.
class [[nodiscard]] OwnedBusName {
 public:
  // Told once it is known whether the bus gives the name (a sandbox may not), and again when it is taken
  // away.
  using Handler = std::function<void(bool owned)>;

  OwnedBusName() = default;
  OwnedBusName(const glib::Ref<GDBusConnection>& connection, const char* name, Handler handler);
  OwnedBusName(OwnedBusName&& other) noexcept { *this = std::move(other); }
  OwnedBusName& operator=(OwnedBusName&& other) noexcept;
  ~OwnedBusName() { end(); }

 private:
  void end();

  guint id_ = 0;
};

} // namespace ondrel::platform::desktop
