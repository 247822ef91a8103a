#include "app/LettersLeaving.h"

#include "app/WindowManager.h"
#include "async/Deadline.h"
#include "base/Translation.h"
#include "platform/Application.h"
#include "platform/Panels.h"

#include <memory>

namespace ondrel::app {

namespace {

constexpr std::chrono::seconds silentWait{3};

using Answer = std::shared_ptr<async::Resolver<bool>>;

async::Task<void> answerByLetters(const WindowManager& windows, Answer answer) {
  const bool haveLeft = co_await windows.windows().lettersToLeave();
  answer->resolve(haveLeft);
}

async::Task<void> answerByUser(platform::Panels& panels, std::shared_ptr<platform::Window> parent,
                               Answer answer) {
  platform::Alert alert{
      base::tr("Finishing Up…"),
      base::tr("A message is still on its way to the mail service. Ondrel quits as soon as it has "
               "arrived. If you quit now, it may not be sent."),
      platform::AlertStyle::warning,
      {base::tr("Cancel"), base::tr("Quit Anyway")}};
  const auto pressed = co_await panels.runAlert(std::move(alert), std::move(parent));
  answer->resolve(pressed == platform::Panels::firstButton + 1);
}

} // namespace

async::Task<bool> letLettersLeave(platform::Application& application, const WindowManager& windows,
                                  platform::Panels& panels) {
  if (!windows.windows().hasLettersUnderWay())
    co_return true;
  const auto soon = co_await async::withDeadline(silentWait, windows.windows().lettersToLeave());
  if (soon)
    co_return *soon;
  auto [resolver, future] = async::makeFuture<bool>();
  const auto answer = std::make_shared<async::Resolver<bool>>(std::move(resolver));
  async::Scope scope; // takes the question off the screen when the letters have left
  scope.spawn(answerByLetters(windows, answer));
  scope.spawn(answerByUser(panels, application.frontWindow(), answer));
  const auto mayEnd = co_await std::move(future);
  co_return mayEnd.value_or(false);
}

} // namespace ondrel::app
