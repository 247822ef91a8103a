#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <functional>
#include <string>

namespace ondrel::platform::desktop {

// One interface of one object that others on a bus can use, for as long as this lives. Its properties are
// read-only and its methods return nothing: each call is answered before it is handled.
class [[nodiscard]] BusObject {
 public:
  struct Handlers {
    // Of a type that the description names: the bus has looked.
    std::function<void(const std::string& method, GVariant* arguments)> call;
    std::function<GVariant*(const std::string& property)> property; // a floating value, of the type told
  };

  BusObject() = default;
  // `description` is the introspection data of a node with one interface.
  BusObject(glib::Ref<GDBusConnection> connection, const char* path, const char* description,
            Handlers handlers);
  BusObject(BusObject&& other) noexcept { *this = std::move(other); }
  BusObject& operator=(BusObject&& other) noexcept;
  ~BusObject() { end(); }

  explicit operator bool() const { return id_ != 0; }
  void emitSignal(const char* name, GVariant* arguments = nullptr) const;

 private:
  void end();

  glib::Ref<GDBusConnection> connection_;
  std::string path_;
  std::string interface_;
  guint id_ = 0;
};

} // namespace ondrel::platform::desktop
