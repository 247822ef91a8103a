#include "jmap/protocol/RetryingWorker.h"

#include "async/sleep.h"

#include <utility>

namespace ondrel::jmap {

RetryingWorker::RetryingWorker(Work work) : work_(std::move(work)) {
  restart();
}

void RetryingWorker::restart() {
  task_.cancel();
  retry_.stop();
  signal_ = std::make_shared<async::Signal>();
  task_ = scope_.spawn(run(signal_));
}

async::Task<void> RetryingWorker::run(std::shared_ptr<async::Signal> signal) {
  while (true) {
    const bool sent = co_await signal->wait();
    if (!sent)
      co_return;
    retry_.stop();
    const auto outcome = co_await work_();
    const bool cancelled = co_await async::cancelled();
    if (cancelled)
      co_return;
    if (outcome == WorkOutcome::unfinished)
      signal->send();
    else if (outcome == WorkOutcome::failed)
      retry_ = async::Timer(retryPause, [signal] { signal->send(); });
  }
}

} // namespace ondrel::jmap
