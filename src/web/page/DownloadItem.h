#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "async/Timer.h"
#include "base/Observable.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Download;
}

namespace ondrel::web {

struct DownloadState {
  enum class Kind { waiting, downloading, finished, failed, cancelled };
  Kind kind = Kind::downloading;
  std::string error; // of a failed one: a sentence for the user

  bool operator==(const DownloadState&) const = default;
};

// One file on its way to the user's disk, or there, as the interface shows it. Ends once: what is told of it
// after its end changes nothing. Main thread only.
class DownloadItem {
 public:
  // Of the engine: follows its progress and its end by itself.
  DownloadItem(std::string filename, std::string destination, std::shared_ptr<platform::Download> download);
  // Of a transfer whose owner tells its progress and its end. `cancel` ends it, also while it waits; it is
  // called once at most, and the item is cancelled already then. Empty for what can't be cancelled.
  DownloadItem(std::string filename, std::string destination, DownloadState::Kind first,
               std::function<void()> cancel);

  const std::uint64_t id; // unique in the process
  const std::string filename;
  const std::string destination; // absolute path

  // Progress changes 20 times a second at most; of the three, bytesWritten comes last.
  base::Observable<double> fractionCompleted{0.0};
  base::Observable<std::int64_t> totalBytes{-1}; // -1: not known
  base::Observable<std::int64_t> bytesWritten{0};
  base::Observable<DownloadState> state{};
  // False after the end; its owner may say so before, when nothing can be taken back any more.
  base::Observable<bool> canBeCancelled{true};
  // The user has the pointer or the keyboard among the rows, so that none may go. Told by what shows it.
  base::Observable<bool> isHeld{false};
  // It has finished, failed or been cancelled. Comes once.
  base::Event<> ended;

  void markStarted(); // waits no longer
  void setProgress(std::int64_t written, std::int64_t total);
  // The bar fills up; the state follows a moment later.
  void markFinished();
  void markFailed(std::string error);
  void markCancelled();
  // By the user.
  void cancel();

  bool hasEnded() const { return hasEnded_; }

 private:
  struct Progress {
    double fraction = 0;
    std::int64_t written = 0;
    std::int64_t total = -1;
  };

  void progressed();
  void showProgress();
  void copyProgress();
  void end();
  async::Task<void> finishLater();

  std::function<void()> cancel_;
  std::function<Progress()> progress_; // as it is now
  bool hasEnded_ = false;
  bool isStale_ = false; // there is newer progress than what is shown
  std::vector<base::Subscription> subscriptions_;
  std::optional<async::Timer> pause_; // until progress may be shown again
  async::Scope scope_;
};

// Comes when the row of the item may go: 4 s after its end, and not while the user has the pointer or the
// keyboard among the rows. May begin before the end. False when it is cancelled.
async::Task<bool> rowTimeIsOver(std::shared_ptr<DownloadItem> item);

} // namespace ondrel::web
