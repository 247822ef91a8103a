#include "app/Quitting.h"

#include "app/CloseQuestion.h"
#include "platform/Application.h"

namespace ondrel::app {

void Quitting::request() {
  if (underWay_.done())
    underWay_ = scope_.spawn(quit());
}

async::Task<void> Quitting::quit() {
  auto windows = application_.orderedWindows();
  const bool mayGo = co_await question_.mayClose(std::move(windows));
  if (!mayGo)
    co_return;
  // What mustn't be cut off is waited for here: the user has agreed, and the pages still live.
  application_.terminate();
}

} // namespace ondrel::app
