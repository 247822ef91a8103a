#pragma once

#include "async/Timer.h"
#include "base/Observable.h"

#include <chrono>
#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace ondrel::platform {

// The saving of one file whose content is in memory: what couldn't be written (a full disk) is tried again
// until it is. Needs an event loop as soon as a save fails. Main thread only.
class RetriedSave {
 public:
  static constexpr std::chrono::seconds firstRetry{5};
  static constexpr std::chrono::seconds laterRetries{30};

  // Saves all there is, or tells why it can't.
  using Result = std::expected<void, std::string>;
  using Save = std::function<Result()>;
  explicit RetriedSave(Save save) : save_(std::move(save)) {}

  // Saves now. After a failure the owner need not do more.
  Result run();
  // Saves now what is not saved yet.
  void runIfUnsaved();
  // Why the last save failed; absent when all is saved.
  const base::Observable<std::optional<std::string>>& problem() const { return problem_; }

 private:
  void retry();

  Save save_;
  base::Observable<std::optional<std::string>> problem_;
  async::Timer timer_;
};

} // namespace ondrel::platform
