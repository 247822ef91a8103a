#include "platform/RetriedSave.h"

namespace ondrel::platform {

RetriedSave::Result RetriedSave::run() {
  auto result = save_();
  if (result)
    timer_.stop();
  else if (!*problem_)
    timer_ = async::Timer(firstRetry, [this] { retry(); });
  problem_.set(result ? std::nullopt : std::optional(result.error()));
  return result;
}

void RetriedSave::retry() {
  if (!run())
    timer_ = async::Timer(laterRetries, [this] { retry(); });
}

void RetriedSave::runIfUnsaved() {
  if (*problem_) [[maybe_unused]]
    const auto told = run();
}

} // namespace ondrel::platform
