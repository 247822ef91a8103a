#pragma once

#include "async/Scope.h"
#include "async/Signal.h"
#include "async/Timer.h"

#include <chrono>
#include <functional>
#include <memory>

namespace ondrel::jmap {

enum class WorkOutcome {
  done,
  unfinished, // more can be done at once
  failed,     // to be tried again later
};

// Does one piece of work at a time when it is woken; any number of calls meanwhile lead to one more. What
// failed is tried again after a pause. Main thread only.
class RetryingWorker {
 public:
  using Work = std::function<async::Task<WorkOutcome>()>;

  static constexpr std::chrono::seconds retryPause{30};

  explicit RetryingWorker(Work work);

  void wake() { signal_->send(); }
  // Gives up what is under way and what is still to be done: from now on it waits.
  void restart();

 private:
  async::Task<void> run(std::shared_ptr<async::Signal> signal);

  Work work_;
  std::shared_ptr<async::Signal> signal_;
  async::Timer retry_;
  async::TaskHandle task_;
  async::Scope scope_;
};

} // namespace ondrel::jmap
