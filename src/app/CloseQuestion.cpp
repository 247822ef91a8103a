#include "app/CloseQuestion.h"

#include "app/WindowManager.h"
#include "async/Scope.h"
#include "platform/Panels.h"
#include "platform/Window.h"
#include "web/WindowViewModel.h"
#include "web/page/LeaveQuestion.h"

#include <map>
#include <utility>

namespace ondrel::app {

namespace {

struct Answers {
  std::size_t missing;
  async::Resolver<bool> complete;
  std::map<std::size_t, platform::LeaveReply> objections; // by the position of the page
};

async::Task<void> askPage(std::shared_ptr<web::WindowViewModel> viewModel, std::size_t position,
                          std::shared_ptr<Answers> answers) {
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

struct CloseQuestion::Turn {
  explicit Turn(CloseQuestion& owner) : question(owner) { question.busy_ = true; }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() { question.endTurn(); }

  CloseQuestion& question;
};

void CloseQuestion::endTurn() {
  busy_ = false;
  askedAbout_.reset();
  for (auto& next : std::exchange(waiting_, {}))
    next.resolve(true);
}

CloseQuestion::Pages CloseQuestion::pagesOf(const Windows& windows) const {
  Pages pages;
  for (const auto& window : windows)
    if (auto viewModel = windows_.windows().viewModel(window);
        viewModel && viewModel->liveWebView() && !*viewModel->letterIsLeaving)
      pages.emplace_back(window, std::move(viewModel));
  return pages;
}

async::Task<bool> CloseQuestion::mayClose(Windows windows) {
  while (busy_ && !pagesOf(windows).empty()) {
    if (const auto window = askedAbout_.lock())
      window->present();
    auto [resolver, future] = async::makeFuture<bool>();
    waiting_.push_back(std::move(resolver));
    const auto turn = co_await std::move(future);
    if (!turn)
      co_return false;
  }
  auto pages = pagesOf(windows);
  if (pages.empty())
    co_return true;
  const Turn turn(*this);
  co_return co_await ask(std::move(pages));
}

async::Task<bool> CloseQuestion::ask(Pages pages) {
  auto [resolver, future] = async::makeFuture<bool>();
  const auto answers = std::make_shared<Answers>(pages.size(), std::move(resolver));
  async::Scope asking;
  for (std::size_t i = 0; i < pages.size(); ++i)
    asking.spawn(askPage(pages[i].second, i, answers));
  const auto complete = co_await std::move(future);
  if (!complete)
    co_return false;
  if (answers->objections.empty())
    co_return true;

  // The user sees what is asked about.
  const auto& first = pages[answers->objections.begin()->first].first;
  first->unminimize();
  first->present();
  askedAbout_ = first;
  const auto pressed = co_await panels_.runAlert(leaveAlert(), first);
  const bool leave = pressed == platform::Panels::firstButton + 1;
  for (auto& [position, objection] : answers->objections)
    std::move(objection)(leave);
  co_return leave;
}

} // namespace ondrel::app
