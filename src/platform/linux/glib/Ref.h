#pragma once

#include <glib-object.h>

#include <cstddef>
#include <memory>
#include <utility>

namespace ondrel::glib {

// A strong reference to a GObject. Three verbs make the ownership of every pointer readable at the call:
//   adopt(p)  takes over the reference that the callee handed out ("transfer full")
//   share(p)  adds one ("transfer none", and floating references, which it sinks)
//   weak(p)   looks on without keeping alive (WeakRef)
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  Ref(const Ref& other) : object_(other.object_) {
    if (object_)
      g_object_ref(object_);
  }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_)
      g_object_unref(object_);
  }

  T* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  bool operator==(const Ref& other) const { return object_ == other.object_; }
  // Hands the reference to a callee that takes it over.
  T* release() { return std::exchange(object_, nullptr); }

  static Ref fromFull(T* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

 private:
  T* object_ = nullptr;
};

template <class T>
Ref<T> adopt(T* object) {
  return Ref<T>::fromFull(object);
}

template <class T>
Ref<T> share(T* object) {
  return Ref<T>::fromFull(object ? static_cast<T*>(g_object_ref_sink(object)) : nullptr);
}

// Reads as null once the object has been disposed of. Not movable: GLib keeps its address.
template <class T>
class WeakRef {
 public:
  WeakRef() { g_weak_ref_init(&ref_, nullptr); }
  explicit WeakRef(T* object) { g_weak_ref_init(&ref_, object); }
  WeakRef(const WeakRef&) = delete;
  WeakRef& operator=(const WeakRef&) = delete;
  ~WeakRef() { g_weak_ref_clear(&ref_); }

  void set(T* object) { g_weak_ref_set(&ref_, object); }
  Ref<T> lock() const { return adopt(static_cast<T*>(g_weak_ref_get(&ref_))); }

 private:
  mutable GWeakRef ref_;
};

// One deleter for all plain GLib types.
struct Deleter {
  void operator()(char* p) const { g_free(p); }
  void operator()(char** p) const { g_strfreev(p); }
  void operator()(GError* p) const { g_error_free(p); }
  void operator()(GBytes* p) const { g_bytes_unref(p); }
  void operator()(GVariant* p) const { g_variant_unref(p); }
  void operator()(GUri* p) const { g_uri_unref(p); }
  void operator()(GKeyFile* p) const { g_key_file_unref(p); }
  void operator()(GDateTime* p) const { g_date_time_unref(p); }
};
template <class T>
using Owned = std::unique_ptr<T, Deleter>;
using CString = Owned<char>;

// Collects a GError: pass `error.out()` where a GError** is asked for.
class Error {
 public:
  GError** out() {
    g_clear_error(&raw_);
    return &raw_;
  }
  explicit operator bool() const { return raw_ != nullptr; }
  const GError* raw() const { return raw_; }
  const char* message() const { return raw_ ? raw_->message : ""; }
  bool matches(GQuark domain, int code) const { return g_error_matches(raw_, domain, code) != FALSE; }

  Error() = default;
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;
  ~Error() { g_clear_error(&raw_); }

 private:
  GError* raw_ = nullptr;
};

} // namespace ondrel::glib
