#pragma once

#include "async/Timer.h"
#include "base/Observable.h"
#include "web/page/PageProblem.h"

#include <chrono>

namespace ondrel::web {

// Notices that a tab's page hangs, and says so as its problem. Main thread only.
class HangWatch {
 public:
  // From what the user did in vain.
  static constexpr std::chrono::seconds patience{8};

  explicit HangWatch(base::Observable<PageProblem>& problem) : problem_(problem) {}

  // What the engine says of the page's process.
  void setResponsive(bool responsive);
  // The user wants to wait: nothing is said for as long again.
  void wait();
  // Whatever the engine says.
  void tellHang();

 private:
  void forget();

  base::Observable<PageProblem>& problem_;
  bool responsive_ = true;
  async::Timer timer_;
};

} // namespace ondrel::web
