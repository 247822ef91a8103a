#include "web/LetterHandOver.h"

#include "async/sleep.h"
#include "base/Translation.h"
#include "platform/WebView.h"
#include "platform/Window.h"
#include "web/WindowViewModel.h"

#include <algorithm>

namespace ondrel::web {

namespace {

using namespace std::chrono_literals;

constexpr async::Duration pause = 500ms;
// A page that a box holds up doesn't answer.
constexpr async::Duration answerDeadline = 2s;

constexpr const char* doubtOfSending = base::trMark(
    "It isn’t certain that this message was sent. Look for it among the sent ones before you send it again.");
constexpr const char* doubtOfDiscarding = base::trMark("It isn’t certain that this draft was discarded.");

} // namespace

LetterHandOver::LetterHandOver(std::weak_ptr<WindowViewModel> viewModel, std::string stateScript)
    : viewModel_(std::move(viewModel)), stateScript_(std::move(stateScript)) {
}

LetterHandOver::~LetterHandOver() {
  stop();
}

bool LetterHandOver::isGoing() const {
  return !task_.done();
}

void LetterHandOver::stop() {
  task_.cancel();
  task_ = {};
  if (const auto viewModel = viewModel_.lock())
    viewModel->letterIsLeaving.set(false);
}

bool LetterHandOver::isOffScreen() const {
  const auto viewModel = viewModel_.lock();
  const auto window = viewModel ? viewModel->window.lock() : nullptr;
  return window && window->isWithdrawn();
}

void LetterHandOver::begin(LetterEnd end) {
  const auto viewModel = viewModel_.lock();
  // Nobody presses a button of a window that isn't there: the page says it twice.
  if (!viewModel || (isGoing() && isOffScreen()))
    return;
  stop();
  progress_ = LetterProgress(end);
  viewModel->notice.set("");
  viewModel->letterIsLeaving.set(true);
  task_ = scope_.spawn(follow());
}

void LetterHandOver::discardUndone() {
  if (!isGoing() || progress_.end() != LetterEnd::discarded)
    return;
  stop();
  bringBack();
}

void LetterHandOver::pageAsks() {
  if (!isGoing())
    return;
  progress_.pageAsks();
  take(LetterProgress::Step::ask);
}

void LetterHandOver::hide() {
  const auto viewModel = viewModel_.lock();
  if (const auto window = viewModel ? viewModel->window.lock() : nullptr)
    window->withdraw();
}

void LetterHandOver::bringBack() {
  if (!isOffScreen())
    return;
  const auto window = viewModel_.lock()->window.lock();
  window->unminimize();
  window->present();
}

async::Task<LetterState> LetterHandOver::ask() {
  const auto viewModel = viewModel_.lock();
  const auto webView = viewModel ? viewModel->liveWebView() : nullptr;
  if (!webView || !viewModel->showsService())
    co_return LetterState::unknown;
  const auto said = co_await webView->evaluate(stateScript_, std::nullopt, answerDeadline);
  co_return said && said->is_string() ? letterState(said->get_string()) : LetterState::unknown;
}

bool LetterHandOver::take(LetterProgress::Step step) {
  using enum LetterProgress::Step;
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return false;
  if (viewModel->pageProblem->kind == PageProblem::Kind::processTerminated)
    step = doubt; // and what it was doing has ended with it
  switch (step) {
  case wait:
  case hide:
    viewModel->letterIsLeaving.set(true);
    if (step == hide)
      this->hide();
    return true;
  case ask:
    // A box that stands before the user holds up nothing else.
    viewModel->letterIsLeaving.set(false);
    bringBack();
    return true;
  case close:
    // It is leaving until the window has gone: what waits for letters tells them from those that came back.
    viewModel->isDone = true;
    if (const auto window = viewModel->window.lock())
      window->close();
    return false;
  case keep:
  case doubt:
    viewModel->letterIsLeaving.set(false);
    if (step == doubt)
      viewModel->notice.set(
          base::tr(progress_.end() == LetterEnd::sent ? doubtOfSending : doubtOfDiscarding));
    bringBack();
    return false;
  }
  return false;
}

async::Task<void> LetterHandOver::follow() {
  const auto& loop = async::EventLoop::current();
  const auto begin = loop.now();
  for (;;) {
    const auto state = co_await ask();
    const bool isReplaced = co_await async::cancelled();
    if (isReplaced)
      co_return;
    const auto since = loop.now() - begin;
    const bool goesOn = take(progress_.next(state, since));
    if (!goesOn)
      co_return;
    const auto grace = progress_.grace();
    const bool sleptThrough = co_await async::sleep(since < grace ? std::min(pause, grace - since) : pause);
    if (!sleptThrough)
      co_return;
  }
}

} // namespace ondrel::web
