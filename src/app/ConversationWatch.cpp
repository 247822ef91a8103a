#include "app/ConversationWatch.h"

#include "app/BrowserWindows.h"
#include "async/sleep.h"
#include "platform/Application.h"
#include "platform/WebView.h"
#include "settings/ServicePage.h"
#include "web/WindowViewModel.h"
#include "web/page/MailURL.h"

#include <chrono>
#include <string>
#include <string_view>

namespace ondrel::app {

namespace {

// Between one look at a page that shows no conversation yet and the next; eight seconds in all.
constexpr std::chrono::milliseconds firstPause{250};
constexpr std::chrono::seconds longestPause{4};

} // namespace

ConversationWatch::ConversationWatch(platform::Application& application, BrowserWindows& windows)
    : application_(application), windows_(windows),
      focusChanged_(application.windowFocused.subscribe(
          [this](const BrowserWindows::Window&) { later(&ConversationWatch::look); })) {
  later(&ConversationWatch::update);
}

void ConversationWatch::later(void (ConversationWatch::*work)()) {
  scope_.spawn(onNextTurn(work));
}

async::Task<void> ConversationWatch::onNextTurn(void (ConversationWatch::*work)()) {
  (this->*work)();
  co_return;
}

void ConversationWatch::update() {
  const auto key = application_.focusedWindow();
  const auto focusedModel = windows_.viewModel(key);
  if (key) {
    auto& reads = trackedReads_[focusedModel.get()];
    reads.clear();
    const auto changed = [this, tracked = focusedModel.get()] { trackedValueChanged(tracked); };
    reads.push_back(windows_.changed.subscribe(changed));
    if (focusedModel)
      reads.push_back(focusedModel->urlString.observe(changed));
  }
  activeURLContainsMail.set(focusedModel && web::containsMail(*focusedModel->urlString));
}

void ConversationWatch::trackedValueChanged(const web::WindowViewModel* focusedModel) {
  // Once for each set of reads: a page that changes twice in a turn is looked at once.
  trackedReads_.erase(focusedModel);
  later(&ConversationWatch::followTrackedChange);
}

void ConversationWatch::followTrackedChange() {
  look();
  pageChanged.emit();
}

void ConversationWatch::look() {
  check_.cancel();
  update();
  check_ = scope_.spawn(check());
}

async::Task<void> ConversationWatch::check() {
  // The page has its address first and the message from its server later.
  for (async::Duration pause = firstPause; pause <= longestPause; pause *= 2) {
    const bool visible = co_await showsConversation();
    // A newer check follows, and knows better.
    const bool isReplaced = co_await async::cancelled();
    if (isReplaced)
      co_return;
    isConversationVisible.set(visible);
    if (visible || !*activeURLContainsMail)
      co_return;
    const bool slept = co_await async::sleep(pause);
    if (!slept)
      co_return;
  }
}

async::Task<bool> ConversationWatch::showsConversation() {
  const auto focusedModel = windows_.focusedViewModel();
  const auto webView = focusedModel ? focusedModel->liveWebView() : nullptr;
  if (!*activeURLContainsMail || !webView || webView->loadProgress())
    co_return false;
  const auto result = co_await focusedModel->evaluate(std::string(settings::page::showsConversation));
  co_return result && result->is_bool() && result->get_bool();
}

} // namespace ondrel::app
