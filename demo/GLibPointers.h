#pragma once

#include <gio/gio.h>

#include <memory>

namespace ondrel::demo {

template <auto Free>
struct FreeWith {
  void operator()(auto* pointer) const { Free(pointer); }
};

template <class T>
using ObjectPtr = std::unique_ptr<T, FreeWith<g_object_unref>>;
using StringPtr = std::unique_ptr<char, FreeWith<g_free>>;
using ErrorPtr = std::unique_ptr<GError, FreeWith<g_error_free>>;
using BytesPtr = std::unique_ptr<GBytes, FreeWith<g_bytes_unref>>;

// One more owner of an object that somebody else holds.
template <class T>
ObjectPtr<T> share(T* object) {
  return ObjectPtr<T>(static_cast<T*>(g_object_ref(object)));
}

} // namespace ondrel::demo
