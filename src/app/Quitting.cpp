#include "app/Quitting.h"

#include "app/CloseQuestion.h"
#include "app/LettersLeaving.h"
#include "platform/Application.h"

namespace ondrel::app {

void Quitting::request() {
  if (underWay_.done())
    underWay_ = scope_.spawn(quit(false));
}

void Quitting::requestRestart() {
  if (underWay_.done())
    underWay_ = scope_.spawn(quit(true));
}

async::Task<void> Quitting::quit(bool restarts) {
  auto windows = application_.orderedWindows();
  const bool mayGo = co_await question_.mayQuit(std::move(windows));
  if (!mayGo)
    co_return;
  const bool lettersHaveLeft = co_await letLettersLeave(application_, windows_, panels_);
  if (!lettersHaveLeft)
    co_return;
  restarts_ = restarts;
  application_.quit();
}

} // namespace ondrel::app
