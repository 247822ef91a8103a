#include "highlights/SequentialTasks.h"

#include "async/Future.h"
#include "async/Scope.h"
#include "async/Timer.h"

#include <memory>
#include <utility>

namespace ondrel::highlights {

namespace {

using Resolver = async::Resolver<bool>;

async::Task<void> runAndTell(async::Task<void> task, std::shared_ptr<Resolver> ended) {
  co_await std::move(task);
  ended->resolve(true);
}

} // namespace

async::Task<void> runSequentially(async::Scope& scope, std::vector<async::Task<void>> tasks,
                                  async::Duration patience) {
  for (auto& task : tasks) {
    auto [resolver, ended] = async::makeFuture<bool>();
    const auto answer = std::make_shared<Resolver>(std::move(resolver));
    scope.spawn(runAndTell(std::move(task), answer));
    const async::Timer timer(patience, [answer] { answer->resolve(false); });
    const auto goOn = co_await std::move(ended);
    if (!goOn)
      co_return;
  }
}

} // namespace ondrel::highlights
