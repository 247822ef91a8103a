#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace ondrel::base {

// Keeps one subscription alive; dropping it ends the subscription. May outlive what it subscribed to.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
  Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    if (this != &other) {
      reset();
      end_ = std::exchange(other.end_, nullptr);
    }
    return *this;
  }
  ~Subscription() { reset(); }

  void reset() {
    if (auto end = std::exchange(end_, nullptr))
      end();
  }
  explicit operator bool() const { return static_cast<bool>(end_); }

 private:
  std::function<void()> end_;
};

// A notification with any number of subscribers, called in the order of subscribing. Subscribers may come and
// go, and the event itself may be destroyed, while it is being emitted. Main thread only.
template <class... Args>
class Event {
 public:
  using Handler = std::function<void(Args...)>;

  Event() = default;
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  Subscription subscribe(Handler handler) {
    const auto id = ++handlers_->last;
    handlers_->byId.emplace(id, std::make_shared<Handler>(std::move(handler)));
    return Subscription([weak = std::weak_ptr(handlers_), id] {
      if (auto handlers = weak.lock())
        handlers->byId.erase(id);
    });
  }

  void emit(Args... args) const {
    const auto handlers = handlers_;
    std::vector<std::uint64_t> ids;
    ids.reserve(handlers->byId.size());
    for (const auto& [id, handler] : handlers->byId)
      ids.push_back(id);
    for (const auto id : ids) {
      const auto found = handlers->byId.find(id);
      if (found == handlers->byId.end())
        continue;
      const auto handler = found->second;
      (*handler)(args...);
    }
  }

  bool hasSubscribers() const { return !handlers_->byId.empty(); }

 private:
  struct Handlers {
    std::uint64_t last = 0;
    std::map<std::uint64_t, std::shared_ptr<Handler>> byId;
  };
  std::shared_ptr<Handlers> handlers_ = std::make_shared<Handlers>();
};

} // namespace ondrel::base
