#include "app/WindowManager.h"

#include "app/ClosedTabs.h"
#include "app/SessionStore.h"
#include "async/sleep.h"
#include "base/Text.h"
#include "base/Url.h"
#include "platform/Application.h"
#include "platform/Clipboard.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "web/MailURL.h"
#include "web/WindowViewModel.h"

#include <algorithm>

namespace ondrel::app {

using platform::KeyEvent;
using platform::Modifiers;
using WindowPtr = std::shared_ptr<platform::Window>;

namespace {

// How long the pages must be quiet before their addresses are saved.
constexpr std::chrono::seconds saveDebounce{2};

constexpr std::string_view conversationVisible =
    "globalThis.FastMail?.router?.appController?.isConversationVisible ?? false";

} // namespace

WindowManager::WindowManager(platform::Application& application, settings::AppSettings& settings,
                             SessionStore& sessionStore, ClosedTabs& closedTabs,
                             platform::Clipboard& clipboard, const web::WebServices& webServices,
                             BrowserContentFactory contentFactory)
    : application_(application), settings_(settings), sessionStore_(sessionStore), closedTabs_(closedTabs),
      clipboard_(clipboard), webServices_(webServices), contentFactory_(std::move(contentFactory)) {
  later(&WindowManager::restore);
  subscriptions_.push_back(application_.willTerminate.subscribe([this] {
    save();
    closedTabs_.finish();
    // What closes from now on closes because the program ends, and belongs to the session.
    isTerminating_ = true;
  }));
  subscriptions_.push_back(
      application_.addKeyDownMonitor([this](const KeyEvent& event) { return keyDown(event); }));
  subscriptions_.push_back(
      application_.windowWillClose.subscribe([this](const WindowPtr& window) { windowWillClose(window); }));
  subscriptions_.push_back(application_.willResignActive.subscribe([this] { later(&WindowManager::save); }));
  subscriptions_.push_back(application_.windowDidBecomeKey.subscribe([this](const WindowPtr& window) {
    openedTabs_.didBecomeKey(window);
    later(&WindowManager::updateActiveURLContainsMail);
  }));
  subscriptions_.push_back(settings_.fastmailEnvironmentDidChange.subscribe(
      [this] { later(&WindowManager::environmentChanged); }));
  subscriptions_.push_back(
      application_.menuDidBeginTracking.subscribe([this] { later(&WindowManager::refreshClipboardURL); }));
  later(&WindowManager::updateActiveURLContainsMail);
}

WindowManager::~WindowManager() = default;

void WindowManager::later(void (WindowManager::*work)()) {
  scope_.spawn(onNextTurn(work));
}

async::Task<void> WindowManager::onNextTurn(void (WindowManager::*work)()) {
  (this->*work)();
  co_return;
}

async::Task<void> WindowManager::windowClosed(WindowPtr window) {
  if (isTerminating_)
    co_return;
  const auto closed = std::ranges::find(windowViewModels_, window, &Entry::window);
  if (closed != windowViewModels_.end()) {
    const auto isOther = [&](const Entry& each) {
      return each.window != window && !each.window->isOrderedOut();
    };
    if (std::ranges::none_of(windowViewModels_, isOther) && !window->isOrderedOut())
      lastClosedWindowFrame_ = window->frame();
    // Out of the list before it is taken apart, which may call back.
    const auto entry = std::move(*closed);
    windowViewModels_.erase(closed);
    windowViewModelsChanged_.emit();
  }
  save();
}

bool WindowManager::keyDown(const KeyEvent& event) {
  const auto& modifiers = event.modifiers;
  const auto key = application_.keyWindow();
  if (event.keyCode == KeyEvent::tabKeyCode && modifiers.exactly(Modifiers::control)) {
    if (key)
      key->selectNextTab();
    return true;
  }
  if (event.keyCode == KeyEvent::tabKeyCode && modifiers.exactly(Modifiers::control | Modifiers::shift)) {
    if (key)
      key->selectPreviousTab();
    return true;
  }
  // Alt is what other browsers of the desktop use.
  if (modifiers.exactly(Modifiers::command) || modifiers.exactly(Modifiers::option))
    return selectTab(event.characters);
  if (modifiers.exactly(Modifiers::command | Modifiers::shift)) {
    selectTab(event.characters);
    // The menu's item behind this shortcut shall find a fresh value; it still sees the key.
    if (base::lowercasedAscii(event.charactersIgnoringModifiers) == "f")
      refreshClipboardURL();
  }
  return false;
}

bool WindowManager::selectTab(const std::string& characters) {
  const auto digit = characters.empty() ? '0' : characters.front();
  const auto key = application_.keyWindow();
  const auto group = key && digit >= '1' && digit <= '9' ? key->tabGroup() : nullptr;
  if (!group)
    return false;
  const auto tabs = group->windows();
  const auto position = digit == '9' ? tabs.size() - 1 : static_cast<std::size_t>(digit - '1');
  if (position >= tabs.size())
    return false;
  tabs[position]->makeKeyAndOrderFront();
  return true;
}

void WindowManager::refreshClipboardURL() {
  scope_.spawn(readClipboard());
}

async::Task<void> WindowManager::readClipboard() {
  const auto text = co_await clipboard_.readString();
  const auto prefix = settings_.webAppBaseURL(settings::FastmailEnvironment::production) + "mail/";
  if (text && text->starts_with(prefix) && base::Url::parse(*text))
    clipboardFastMailURL.set(text);
  else
    clipboardFastMailURL.set(std::nullopt);
}

void WindowManager::updateActiveURLContainsMail() {
  const auto key = application_.keyWindow();
  const auto keyModel = viewModel(key);
  if (key) {
    auto& reads = trackedReads_[keyModel.get()];
    reads.clear();
    const auto changed = [this, tracked = keyModel.get()] { trackedValueChanged(tracked); };
    reads.push_back(windowViewModelsChanged_.subscribe(changed));
    if (keyModel)
      reads.push_back(keyModel->urlString.observe(changed));
  }
  activeURLContainsMail.set(keyModel && web::containsMail(*keyModel->urlString));
}

void WindowManager::trackedValueChanged(const web::WindowViewModel* keyModel) {
  // Once for each set of reads: a page that changes twice in a turn is looked at once.
  trackedReads_.erase(keyModel);
  later(&WindowManager::followTrackedChange);
}

void WindowManager::followTrackedChange() {
  trackURLTask_.cancel();
  updateActiveURLContainsMail();
  trackURLTask_ = scope_.spawn(checkConversationAndScheduleSave());
}

async::Task<void> WindowManager::checkConversationAndScheduleSave() {
  co_await checkConversation();
  const bool isReplaced = co_await async::cancelled();
  if (isReplaced)
    co_return;
  urlSaveTask_.cancel();
  urlSaveTask_ = scope_.spawn(saveLater());
}

async::Task<void> WindowManager::checkConversation() {
  bool visible = false;
  const auto keyModel = keyViewModel();
  const auto webView = keyModel ? keyModel->liveWebView() : nullptr;
  if (*activeURLContainsMail && webView && !webView->isLoading()) {
    const auto result = co_await keyModel->evaluate(std::string(conversationVisible));
    // A newer check follows, and knows better.
    const bool isReplaced = co_await async::cancelled();
    if (isReplaced)
      co_return;
    visible = result && result->is_bool() && result->get_bool();
  }
  isConversationVisible.set(visible);
}

async::Task<void> WindowManager::saveLater() {
  const bool sleptThrough = co_await async::sleep(saveDebounce);
  if (sleptThrough)
    save();
}

} // namespace ondrel::app
