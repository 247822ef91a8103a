#pragma once

#include "async/Future.h"
#include "async/Task.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::platform {
class Panels;
class Window;
} // namespace ondrel::platform

namespace ondrel::web {
class RunningDownloads;
class WindowViewModel;
} // namespace ondrel::web

namespace ondrel::app {

class WindowManager;

// Asks the pages of windows that the user wants to close whether they may go, and the user once for all that
// don't want it and, at the end of the program, for the downloads that end with it. All outlive the question.
class CloseQuestion {
 public:
  CloseQuestion(const WindowManager& windows, platform::Panels& panels,
                const web::RunningDownloads& downloads)
      : windows_(windows), panels_(panels), downloads_(downloads) {}

  // Pages are asked at the same time, and no longer than platform::closeDeadline. A window without a page,
  // or with a letter that is on its way, goes: the latter is waited for elsewhere. A
  // second wish waits until the first has its answer, and is reminded of what is asked.
  async::Task<bool> mayClose(std::vector<std::shared_ptr<platform::Window>> windows);
  // The same of all windows, from front to back, and of the program.
  async::Task<bool> mayQuit(std::vector<std::shared_ptr<platform::Window>> windows);

 private:
  using Windows = std::vector<std::shared_ptr<platform::Window>>;
  using Pages =
      std::vector<std::pair<std::shared_ptr<platform::Window>, std::shared_ptr<web::WindowViewModel>>>;
  struct Turn;

  Pages pagesOf(const Windows& windows) const; // that have one to ask
  async::Task<bool> decide(Windows windows, bool isEnd);
  async::Task<bool> ask(Pages pages, std::shared_ptr<platform::Window> front, bool isEnd);
  std::vector<std::string> endingDownloads(bool isEnd) const;
  void endTurn();

  const WindowManager& windows_;
  platform::Panels& panels_;
  const web::RunningDownloads& downloads_;
  bool busy_ = false;
  std::weak_ptr<platform::Window> askedAbout_; // the window that the open question is about
  std::vector<async::Resolver<bool>> waiting_;
};

} // namespace ondrel::app
