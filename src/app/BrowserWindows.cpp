#include "app/BrowserWindows.h"

#include "async/Future.h"
#include "platform/Application.h"
#include "web/WindowViewModel.h"
#include "web/page/MailURL.h"

#include <algorithm>

namespace ondrel::app {

void BrowserWindows::add(const Window& window, const Tab& tab) {
  entries_.push_back({window, tab, nullptr});
}

void BrowserWindows::setContent(const Window& window, std::unique_ptr<BrowserContent> content) {
  const auto made = std::ranges::find(entries_, window, &Entry::window);
  if (made != entries_.end())
    made->content = std::move(content);
  changed.emit();
}

bool BrowserWindows::remove(const Window& window) {
  const auto closed = std::ranges::find(entries_, window, &Entry::window);
  if (closed == entries_.end())
    return false;
  const auto entry = std::move(*closed);
  entries_.erase(closed);
  changed.emit();
  return true;
}

BrowserWindows::Tab BrowserWindows::viewModel(const Window& window) const {
  const auto found = std::ranges::find(entries_, window, &Entry::window);
  return window && found != entries_.end() ? found->tab : nullptr;
}

BrowserWindows::Tab BrowserWindows::focusedViewModel() const {
  return viewModel(application_.focusedWindow());
}

BrowserWindows::Tab BrowserWindows::frontViewModel() const {
  for (const auto& window : application_.orderedWindows())
    if (auto tab = viewModel(window); tab && !window->isWithdrawn())
      return tab;
  return nullptr;
}

std::vector<BrowserWindows::Tab> BrowserWindows::viewModels() const {
  std::vector<Tab> all;
  all.reserve(entries_.size());
  for (const auto& entry : entries_)
    all.push_back(entry.tab);
  return all;
}

std::vector<BrowserWindows::ActiveWindow> BrowserWindows::shown() const {
  std::vector<ActiveWindow> result;
  for (const auto& window : application_.windows())
    if (auto tab = viewModel(window); tab && !window->isWithdrawn())
      result.emplace_back(window, std::move(tab));
  return result;
}

std::vector<BrowserWindows::ActiveWindow> BrowserWindows::shownWithoutLetters() const {
  auto result = shown();
  std::erase_if(result, [](const ActiveWindow& window) {
    // An editor that could not be loaded is still to come: the user has been offered to try it again.
    return window.second->isWritingLetter() || web::isComposeURL(window.second->pageProblem->url);
  });
  return result;
}

std::optional<BrowserWindows::ActiveWindow>
BrowserWindows::activeOf(const std::vector<ActiveWindow>& windows) const {
  const auto key = application_.focusedWindow();
  const ActiveWindow* firstWithMail = nullptr;
  for (const auto& candidate : windows) {
    if (!web::containsMail(*candidate.second->urlString))
      continue;
    if (candidate.first == key)
      return candidate;
    if (!firstWithMail)
      firstWithMail = &candidate;
  }
  if (firstWithMail)
    return *firstWithMail;
  return windows.empty() ? std::nullopt : std::optional(windows.front());
}

bool BrowserWindows::isLastShown(const Window& window) const {
  return !window->isWithdrawn() && std::ranges::none_of(entries_, [&window](const Entry& each) {
    return each.window != window && !each.window->isWithdrawn();
  });
}

bool BrowserWindows::mainWindowContainsMail() const {
  const auto main = viewModel(application_.frontWindow());
  return main && web::containsMail(*main->urlString);
}

bool BrowserWindows::hasComposeWindow() const {
  return std::ranges::any_of(
      entries_, [](const Entry& each) { return each.tab->isComposeURL() && !each.window->isWithdrawn(); });
}

std::optional<std::string> BrowserWindows::currentAccountParameter() const {
  if (const auto active = activeWindow())
    if (auto account = active->second->accountParameter())
      return account;
  for (const auto& each : entries_)
    if (auto account = each.tab->accountParameter())
      return account;
  return std::nullopt;
}

bool BrowserWindows::hasLettersUnderWay() const {
  return std::ranges::any_of(entries_, [](const Entry& each) { return *each.tab->letterIsLeaving; });
}

async::Task<bool> BrowserWindows::lettersToLeave() const {
  for (;;) {
    const auto leaving =
        std::ranges::find_if(entries_, [](const Entry& each) { return *each.tab->letterIsLeaving; });
    if (leaving == entries_.end())
      co_return true;
    const auto tab = leaving->tab;
    auto [resolver, future] = async::makeFuture<bool>();
    const auto answer = std::make_shared<async::Resolver<bool>>(std::move(resolver));
    const auto subscription = tab->letterIsLeaving.observe([answer] { answer->resolve(true); });
    const auto told = co_await std::move(future);
    // A letter that has left takes its window with it.
    if (!told || std::ranges::find(entries_, tab, &Entry::tab) != entries_.end())
      co_return false;
  }
}

} // namespace ondrel::app
