#pragma once

#include <functional>
#include <utility>

namespace ondrel::base {

// The right and the duty to answer one request exactly once. Dropped without an answer, it gives the safe
// default, so that no code path can leave the asker waiting. Move-only.
template <class T>
class [[nodiscard]] Reply {
 public:
  Reply(std::move_only_function<void(T)> answer, T safeDefault)
      : answer_(std::move(answer)), default_(std::move(safeDefault)) {}
  Reply(Reply&& other) noexcept
      : answer_(std::exchange(other.answer_, nullptr)), default_(std::move(other.default_)) {}
  Reply& operator=(Reply&& other) noexcept {
    if (this != &other) {
      answerSafely();
      answer_ = std::exchange(other.answer_, nullptr);
      default_ = std::move(other.default_);
    }
    return *this;
  }
  ~Reply() { answerSafely(); }

  void operator()(T value) && {
    if (answer_)
      std::exchange(answer_, nullptr)(std::move(value));
  }

 private:
  void answerSafely() {
    if (answer_)
      std::exchange(answer_, nullptr)(std::move(default_));
  }

  std::move_only_function<void(T)> answer_;
  T default_;
};

} // namespace ondrel::base
