#pragma once

#include "base/Event.h"

#include <utility>

namespace ondrel::base {

// A field whose changes can be observed. A write of an equal value changes nothing and wakes nobody.
// Main thread only.
template <class T>
class Observable {
 public:
  Observable() = default;
  explicit Observable(T initial) : value_(std::move(initial)) {}
  Observable(const Observable&) = delete;
  Observable& operator=(const Observable&) = delete;

  const T& get() const { return value_; }
  const T& operator*() const { return value_; }
  const T* operator->() const { return &value_; }

  // Observers run before set returns, with the new value in place.
  void set(T value) {
    if (value_ == value)
      return;
    value_ = std::move(value);
    changed_.emit();
  }

  Subscription observe(std::function<void()> observer) const {
    return changed_.subscribe(std::move(observer));
  }

 private:
  T value_{};
  mutable Event<> changed_;
};

} // namespace ondrel::base
