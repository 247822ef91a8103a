#include "app/CloseQuestion.h"

#include "app/WindowManager.h"
#include "async/Scope.h"
#include "base/ListText.h"
#include "base/Translation.h"
#include "platform/Panels.h"
#include "platform/Window.h"
#include "web/RunningDownloads.h"
#include "web/WindowViewModel.h"
#include "web/page/LeaveQuestion.h"

#include <map>
#include <optional>
#include <utility>

namespace ondrel::app {

namespace {

struct Answers {
  std::size_t missing = 0;
  std::optional<async::Resolver<bool>> complete;
  std::map<std::size_t, platform::LeaveReply> objections; // by the position of the page
};

async::Task<void> askPage(std::shared_ptr<web::WindowViewModel> viewModel, std::size_t position,
                          std::shared_ptr<Answers> answers) {
  auto objection = co_await viewModel->tryClose();
  if (objection)
    answers->objections.emplace(position, std::move(*objection));
  if (--answers->missing == 0)
    answers->complete->resolve(true);
}

platform::Alert leaveAlert() {
  return {.messageText = base::tr(web::leaveHeading),
          .informativeText = base::tr(web::leaveText),
          .style = platform::AlertStyle::warning,
          .buttons = {base::tr(web::stayButton), base::tr(web::leaveButton)},
          .escapeButton = base::tr(web::stayButton)};
}

constexpr std::size_t mostNames = 3;

// "“a.pdf”, “b.zip” and 2 more files", of one at least.
std::string namesOf(const std::vector<std::string>& files) {
  const auto named = files.size() <= mostNames ? files.size() : mostNames - 1;
  const auto others = files.size() - named;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < named; ++i)
    // TRANSLATORS: the name of a file in quotation marks
    names.push_back(base::trFormat("“{}”", files[i]));
  if (others == 0)
    return base::andList(std::move(names));
  // TRANSLATORS: {0} are the names of some files
  return base::trPlural("{0} and {1} more file", "{0} and {1} more files", others, base::commaList(names),
                        others);
}

platform::Alert quitAlert(const std::vector<std::string>& files, bool hasObjections) {
  // TRANSLATORS: {} are the names of files, with "and 2 more files" where there are many
  auto text = base::trPlural("{} is still being downloaded. If you quit now, nothing of it is kept.",
                             "{} are still being downloaded. If you quit now, nothing of them is kept.",
                             files.size(), namesOf(files));
  if (hasObjections)
    text += std::string(" ") + base::tr("Changes that you made may not be saved.");
  return {.messageText = base::tr("Quit Before Downloads Are Finished?"),
          .informativeText = std::move(text),
          .style = platform::AlertStyle::warning,
          .buttons = {base::tr("Cancel"), base::tr("Quit Anyway")},
          .escapeButton = base::tr("Cancel")};
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
  return decide(std::move(windows), false);
}

async::Task<bool> CloseQuestion::mayQuit(Windows windows) {
  return decide(std::move(windows), true);
}

std::vector<std::string> CloseQuestion::endingDownloads(bool isEnd) const {
  return isEnd ? downloads_.names() : std::vector<std::string>();
}

async::Task<bool> CloseQuestion::decide(Windows windows, bool isEnd) {
  const auto isNothing = [&] { return pagesOf(windows).empty() && endingDownloads(isEnd).empty(); };
  while (busy_ && !isNothing()) {
    if (const auto window = askedAbout_.lock())
      window->present();
    auto [resolver, future] = async::makeFuture<bool>();
    waiting_.push_back(std::move(resolver));
    const auto turn = co_await std::move(future);
    if (!turn)
      co_return false;
  }
  if (isNothing())
    co_return true;
  const Turn turn(*this);
  auto front = windows.empty() ? nullptr : windows.front();
  co_return co_await ask(pagesOf(windows), std::move(front), isEnd);
}

async::Task<bool> CloseQuestion::ask(Pages pages, std::shared_ptr<platform::Window> front, bool isEnd) {
  const auto answers = std::make_shared<Answers>();
  if (!pages.empty()) {
    auto [resolver, future] = async::makeFuture<bool>();
    answers->missing = pages.size();
    answers->complete.emplace(std::move(resolver));
    async::Scope asking;
    for (std::size_t i = 0; i < pages.size(); ++i)
      asking.spawn(askPage(pages[i].second, i, answers));
    const auto complete = co_await std::move(future);
    if (!complete)
      co_return false;
  }
  // Some may have ended meanwhile.
  const auto downloads = endingDownloads(isEnd);
  const bool hasObjections = !answers->objections.empty();
  if (!hasObjections && downloads.empty())
    co_return true;

  // The user sees what is asked about.
  if (hasObjections)
    front = pages[answers->objections.begin()->first].first;
  if (front) {
    front->unminimize();
    front->present();
  }
  askedAbout_ = front;
  auto alert = downloads.empty() ? leaveAlert() : quitAlert(downloads, hasObjections);
  const auto pressed = co_await panels_.runAlert(std::move(alert), front);
  const bool leave = pressed == platform::Panels::firstButton + 1;
  for (auto& [position, objection] : answers->objections)
    std::move(objection)(leave);
  co_return leave;
}

} // namespace ondrel::app
