#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Observable.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ondrel::platform {
class Download;
}

namespace ondrel::web {

struct DownloadState {
  enum class Kind { downloading, finished, failed };
  Kind kind = Kind::downloading;
  std::string error; // of a failed one

  bool operator==(const DownloadState&) const = default;
};

// One running or finished download, as the interface shows it. Main thread only.
class DownloadItem {
 public:
  DownloadItem(std::string filename, std::string destination, std::shared_ptr<platform::Download> download);

  const std::uint64_t id; // unique in the process
  const std::string filename;
  const std::string destination; // absolute path

  base::Observable<double> fractionCompleted{0.0};
  base::Observable<std::int64_t> bytesWritten{0};
  base::Observable<std::int64_t> totalBytes{-1}; // -1: not known
  base::Observable<DownloadState> state{};

  // The bar fills up; the state follows a moment later.
  void markFinished();
  void markFailed(std::string error);

 private:
  void copyProgress();
  async::Task<void> finishLater();

  std::shared_ptr<platform::Download> download_;
  base::Subscription progressObservation_;
  async::Scope scope_;
};

} // namespace ondrel::web
