#include "platform/linux/windows/WindowSystem.h"

#include "async/EventLoop.h"
#include "platform/linux/windows/TabGroupWindow.h"
#include "platform/linux/windows/TabWindow.h"
#include "platform/linux/windows/X11Windows.h"

#include <algorithm>
#include <utility>

namespace ondrel::platform::windows {

namespace {

bool isShown(GtkWindow* window) {
  return gtk_widget_get_visible(GTK_WIDGET(window)) != FALSE;
}

GtkWindow* visibleTopLevel() {
  auto* topLevels = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(topLevels); ++i) {
    const auto window = glib::adopt(GTK_WINDOW(g_list_model_get_item(topLevels, i)));
    if (isShown(window.get()))
      return window.get(); // the list keeps it
  }
  return nullptr;
}

} // namespace

WindowSystem::WindowSystem(Application& application, GtkApplication* native,
                           std::function<void()> activeMayHaveChanged)
    : application_(application), native_(native), activeMayHaveChanged_(std::move(activeMayHaveChanged)),
      topLevels_(std::make_unique<TopLevelWatch>([this] { activeTopLevelMayHaveChanged(); })) {
}

WindowSystem::~WindowSystem() {
  ending_ = true;
  for (const auto& window : windows_)
    window->abandon();
  for (const auto& group : groups_)
    group->destroy();
}

std::shared_ptr<TabWindow> WindowSystem::makeWindow(const WindowAttributes& attributes) {
  return windows_.emplace_back(std::make_shared<TabWindow>(*this, attributes));
}

std::vector<std::shared_ptr<Window>> WindowSystem::windows() const {
  return {windows_.begin(), windows_.end()};
}

std::vector<std::shared_ptr<Window>> WindowSystem::orderedWindows() const {
  std::vector<std::shared_ptr<Window>> result;
  for (const auto& group : groups_) {
    const auto selected = group->selectedWindow();
    if (selected)
      result.push_back(selected);
    for (auto& window : group->windows())
      if (window != selected)
        result.push_back(std::move(window));
  }
  for (const auto& window : windows_)
    if (!window->group())
      result.push_back(window);
  return result;
}

std::shared_ptr<Window> WindowSystem::focusedWindow() const {
  const auto group = groupOf(activeTopLevel());
  return group ? group->selectedWindow() : nullptr;
}

std::shared_ptr<Window> WindowSystem::frontWindow() const {
  const auto front = std::ranges::find_if(groups_, [](const auto& group) { return group->isOnScreen(); });
  return front == groups_.end() ? nullptr : (*front)->selectedWindow();
}

bool WindowSystem::anyVisible() const {
  return visibleTopLevel() != nullptr;
}

void WindowSystem::bringToFront() {
  const auto last = topLevels_->lastActivated();
  const auto front =
      std::ranges::find_if(groups_, [](const auto& group) { return isShown(group->gtkWindow()); });
  if (front != groups_.end())
    std::shared_ptr(*front)->presentInsisting();
  else if (auto* other = visibleTopLevel())
    gtk_window_present(other);
  // It stands above its window, as the settings do: keys are not to go to that.
  if (last && isShown(last.get()) && groupOf(gtk_window_get_transient_for(last.get())))
    gtk_window_present_with_time(last.get(), x11::serverTime(last.get()));
}

void WindowSystem::hide() {
  std::vector<GtkWindow*> frontToBack;
  for (const auto& group : groups_) {
    group->rememberPosition();
    frontToBack.push_back(group->gtkWindow());
  }
  hidden_.hideAll(frontToBack);
}

base::Subscription WindowSystem::addKeyDownMonitor(Application::KeyMonitor monitor) {
  const auto id = ++monitors_->last;
  monitors_->byId.emplace(id, std::make_shared<Application::KeyMonitor>(std::move(monitor)));
  return base::Subscription([weak = std::weak_ptr(monitors_), id] {
    if (const auto monitors = weak.lock())
      monitors->byId.erase(id);
  });
}

bool WindowSystem::keyPressed(const KeyEvent& event) {
  // A monitor may remove monitors, itself too.
  const auto monitors = monitors_;
  for (const auto& [id, monitor] : std::map(monitors->byId))
    if (monitors->byId.contains(id) && (*monitor)(event))
      return true;
  return false;
}

std::shared_ptr<TabGroupWindow> WindowSystem::makeGroup(const Rect& size) {
  auto group = std::make_shared<TabGroupWindow>(*this, native_, size, TabGroupWindow::Bars::shown,
                                                chromeFactory_ ? chromeFactory_() : nullptr);
  groups_.push_back(group);
  return group;
}

std::shared_ptr<TabGroupWindow> WindowSystem::makeStandalone(const Rect& size) {
  auto group = std::make_shared<TabGroupWindow>(*this, native_, size, TabGroupWindow::Bars::none, nullptr);
  groups_.push_back(group);
  return group;
}

void WindowSystem::willShow(TabGroupWindow& group, bool inFront) {
  // A part of the program can't be on screen while the program is hidden.
  unhide();
  if (inFront)
    moveToFront(group);
}

void WindowSystem::willHide(TabGroupWindow& group) {
  hidden_.forget(group.gtkWindow());
}

void WindowSystem::moveToFront(TabGroupWindow& group) {
  const auto found = std::ranges::find(groups_, &group, &std::shared_ptr<TabGroupWindow>::get);
  if (found != groups_.end())
    std::rotate(groups_.begin(), found, found + 1);
}

void WindowSystem::setCloseQuestion(Application::CloseQuestion question) {
  asking_.emplace(); // what is being asked belongs to the question before
  closeQuestion_ = std::move(question);
}

void WindowSystem::closeAsking(const std::vector<std::shared_ptr<TabWindow>>& windows) {
  if (!closeQuestion_) {
    for (const auto& window : windows)
      window->close();
    return;
  }
  std::vector<std::weak_ptr<TabWindow>> asked;
  for (const auto& window : windows)
    if (window->beginAsking())
      asked.push_back(window);
  if (!asked.empty())
    asking_->spawn(askAndClose(std::move(asked)));
}

async::Task<void> WindowSystem::askAndClose(std::vector<std::weak_ptr<TabWindow>> windows) {
  std::vector<std::shared_ptr<Window>> asked;
  for (const auto& window : windows)
    if (auto live = window.lock())
      asked.push_back(std::move(live));
  const bool mayClose = co_await closeQuestion_(std::move(asked));
  for (const auto& window : windows) {
    const auto live = window.lock();
    if (!live)
      continue;
    live->endAsking();
    if (mayClose)
      live->close();
  }
}

void WindowSystem::willClose(const std::shared_ptr<TabWindow>& window) {
  application_.windowWillClose.emit(window);
}

void WindowSystem::didClose(TabWindow& window) {
  std::erase_if(windows_, [&window](const auto& other) { return other.get() == &window; });
}

void WindowSystem::retire(TabGroupWindow& group) {
  const auto found = std::ranges::find(groups_, &group, &std::shared_ptr<TabGroupWindow>::get);
  if (found == groups_.end())
    return;
  auto dead = std::move(*found);
  groups_.erase(found);
  gtk_widget_set_visible(GTK_WIDGET(dead->gtkWindow()), FALSE);
  async::EventLoop::current().post([dead = std::move(dead)] { dead->destroy(); });
}

void WindowSystem::activeTopLevelMayHaveChanged() {
  if (ending_)
    return;
  if (const auto group = groupOf(activeTopLevel()))
    moveToFront(*group);
  activeMayHaveChanged_();
  keyMayHaveChanged();
}

void WindowSystem::keyMayHaveChanged() {
  const auto key = focusedWindow();
  // A dialog of our own has the keyboard: afterwards the window has it anew.
  if (!key && hasKeyboard())
    lastKey_.reset();
  if (!key || key == lastKey_.lock())
    return;
  lastKey_ = key;
  application_.windowFocused.emit(key);
}

std::shared_ptr<TabGroupWindow> WindowSystem::groupOf(GtkWindow* window) const {
  const auto found = std::ranges::find_if(
      groups_, [window](const auto& group) { return window && group->gtkWindow() == window; });
  return found == groups_.end() ? nullptr : *found;
}

} // namespace ondrel::platform::windows
