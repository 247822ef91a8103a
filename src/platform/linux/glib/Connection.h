#pragma once

#include "platform/linux/glib/Ref.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace ondrel::glib {

// One signal handler. Disconnects when it dies; harmless when the object has died first. Move-only.
class [[nodiscard]] Connection {
 public:
  Connection() = default;
  Connection(GObject* object, gulong id) : object_(std::make_unique<WeakRef<GObject>>(object)), id_(id) {}
  Connection(Connection&&) noexcept = default;
  Connection& operator=(Connection&& other) noexcept {
    if (this != &other) {
      disconnect();
      object_ = std::move(other.object_);
      id_ = other.id_;
    }
    return *this;
  }
  ~Connection() { disconnect(); }

  void disconnect() {
    if (!object_)
      return;
    if (auto object = object_->lock(); object && g_signal_handler_is_connected(object.get(), id_))
      g_signal_handler_disconnect(object.get(), id_);
    object_.reset();
  }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  std::unique_ptr<WeakRef<GObject>> object_;
  gulong id_ = 0;
};

namespace detail {

template <class Signature>
struct Trampoline;

template <class R, class... Args>
struct Trampoline<R(Args...)> {
  using Handler = std::move_only_function<R(Args...)>;

  // The handler is kept alive during the call, since it may disconnect itself.
  static R call(Args... args, gpointer data) {
    const auto handler = *static_cast<std::shared_ptr<Handler>*>(data);
    return (*handler)(args...);
  }
  static void destroy(gpointer data, GClosure*) { delete static_cast<std::shared_ptr<Handler>*>(data); }
};

} // namespace detail

// Connects a handler whose signature is the signal's C signature without the user data, for example
//   connect<void(WebKitWebView*, WebKitLoadEvent)>(view, "load-changed", [this](auto*, auto event) { ... });
// The signature must match the signal to the letter: nothing can check it.
template <class Signature, class Object, class Handler>
Connection connect(Object* object, const char* signal, Handler handler,
                   GConnectFlags flags = G_CONNECT_DEFAULT) {
  using T = detail::Trampoline<Signature>;
  auto* data =
      new std::shared_ptr<typename T::Handler>(std::make_shared<typename T::Handler>(std::move(handler)));
  const auto id =
      g_signal_connect_data(object, signal, reinterpret_cast<GCallback>(&T::call), data, &T::destroy, flags);
  return Connection(G_OBJECT(object), id);
}

// A property's "notify" signal, without its arguments.
template <class Object>
Connection onNotify(Object* object, const char* property, std::move_only_function<void()> handler) {
  const auto signal = std::string("notify::") + property;
  return connect<void(GObject*, GParamSpec*)>(
      object, signal.c_str(), [handler = std::move(handler)](GObject*, GParamSpec*) mutable { handler(); });
}

} // namespace ondrel::glib
