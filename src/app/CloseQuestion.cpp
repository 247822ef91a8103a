#include "app/CloseQuestion.h"

#include "app/WindowManager.h"
#include "async/Future.h"
#include "async/Scope.h"
#include "platform/Panels.h"
#include "platform/Window.h"
#include "web/LeaveQuestion.h"
#include "web/WindowViewModel.h"

#include <map>
#include <utility>

namespace ondrel::app {

namespace {

using ViewModelPtr = std::shared_ptr<web::WindowViewModel>;

struct Answers {
  std::size_t missing;
  async::Resolver<bool> complete;
  std::map<std::size_t, platform::LeaveReply> objections; // by the position of the window
};

async::Task<void> ask(ViewModelPtr viewModel, std::size_t position, std::shared_ptr<Answers> answers) {
  auto objection = co_await viewModel->tryClose();
  if (objection)
    answers->objections.emplace(position, std::move(*objection));
  if (--answers->missing == 0)
    answers->complete.resolve(true);
}

platform::Alert leaveAlert() {
  return {.messageText = std::string(web::leaveHeading),
          .informativeText = std::string(web::leaveText),
          .style = platform::AlertStyle::warning,
          .buttons = {std::string(web::stayButton), std::string(web::leaveButton)},
          .escapeButton = std::string(web::stayButton)};
}

} // namespace

async::Task<bool> CloseQuestion::mayClose(std::vector<std::shared_ptr<platform::Window>> windows) {
  std::vector<std::pair<ViewModelPtr, std::size_t>> pages;
  for (std::size_t i = 0; i < windows.size(); ++i)
    if (auto viewModel = windows_.viewModel(windows[i]);
        viewModel && viewModel->liveWebView() && !*viewModel->letterIsLeaving)
      pages.emplace_back(std::move(viewModel), i);
  if (pages.empty())
    co_return true;

  auto [resolver, future] = async::makeFuture<bool>();
  const auto answers = std::make_shared<Answers>(pages.size(), std::move(resolver));
  async::Scope asking;
  for (auto& [viewModel, position] : pages)
    asking.spawn(ask(std::move(viewModel), position, answers));
  const auto complete = co_await std::move(future);
  if (!complete)
    co_return false;
  if (answers->objections.empty())
    co_return true;

  // The user sees what is asked about.
  const auto& first = windows[answers->objections.begin()->first];
  first->deminiaturize();
  first->makeKeyAndOrderFront();
  const auto pressed = co_await panels_.runAlert(leaveAlert(), first);
  const bool leave = pressed == platform::Panels::firstButton + 1;
  for (auto& [position, objection] : answers->objections)
    std::move(objection)(leave);
  co_return leave;
}

} // namespace ondrel::app
