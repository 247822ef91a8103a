#pragma once

#include <cstddef>
#include <utility>

namespace ondrel::async::detail {

template <class T>
class Shared;

// Base of a heap object that counts its owners itself. One thread only.
template <class T>
class Counted {
 protected:
  Counted() = default;
  ~Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  friend class Shared<T>;
  std::size_t owners_ = 0;
};

// One of the owners of a counted object. The last one deletes it.
template <class T>
class Shared {
 public:
  Shared() = default;
  explicit Shared(T* object) noexcept : object_(object) {
    if (object_)
      ++object_->Counted<T>::owners_;
  }
  Shared(const Shared& other) noexcept : Shared(other.object_) {}
  Shared(Shared&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Shared& operator=(Shared other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Shared() {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the analyzer loses count of the owners.
    if (object_ && --object_->Counted<T>::owners_ == 0)
      delete object_;
  }

  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

} // namespace ondrel::async::detail
