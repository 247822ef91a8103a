#include "platform/linux/windows/TabWindow.h"

#include "async/EventLoop.h"
#include "base/Text.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/windows/TabGroupWindow.h"
#include "platform/linux/windows/WindowSystem.h"

#include <algorithm>
#include <utility>

namespace ondrel::platform::windows {

namespace {

constexpr const char* pageKey = "ondrel-window";
constexpr std::size_t longestTitle = 300; // characters

} // namespace

TabWindow::TabWindow(WindowSystem& system, const WindowAttributes& attributes)
    : system_(&system), identifier_(attributes.identifier), standalone_(attributes.standalone),
      tabbingIdentifier_(attributes.tabbingIdentifier),
      lastFrame_{0, 0, attributes.contentWidth, attributes.contentHeight},
      container_(glib::share(adw_bin_new())) {
}

TabWindow::~TabWindow() {
  if (page_)
    g_object_set_data(G_OBJECT(page_.get()), pageKey, nullptr);
}

TabWindow* TabWindow::of(AdwTabPage* page) {
  return page ? static_cast<TabWindow*>(g_object_get_data(G_OBJECT(page), pageKey)) : nullptr;
}

void TabWindow::setTitle(const std::string& title) {
  title_ = text::boundedUtf8(base::displayLine(title), longestTitle);
  if (page_)
    adw_tab_page_set_title(page_.get(), title_.c_str());
}

void TabWindow::setBusy(bool busy) {
  busy_ = busy;
  if (page_)
    adw_tab_page_set_loading(page_.get(), busy);
}

void TabWindow::setContent(NativeView view) {
  if (state_ == State::open)
    adw_bin_set_child(ADW_BIN(container_.get()), static_cast<GtkWidget*>(view.handle));
}

Rect TabWindow::frame() const {
  const auto group = group_.lock();
  return group && !isClosed() ? group->frame() : lastFrame_;
}

bool TabWindow::isMaximized() const {
  const auto group = group_.lock();
  return group && !isClosed() ? group->isMaximized() : isMaximized_;
}

void TabWindow::maximize() {
  if (state_ != State::open)
    return;
  if (const auto group = group_.lock())
    group->maximize();
  else
    isMaximized_ = true;
}

void TabWindow::setFrame(const Rect& frame) {
  if (state_ != State::open)
    return;
  if (const auto group = group_.lock()) {
    group->setFrame(frame);
    return;
  }
  lastFrame_ = frame;
  frameWasSet_ = true;
}

std::shared_ptr<TabGroupWindow> TabWindow::ensureGroup() {
  if (auto group = group_.lock())
    return group;
  auto group = standalone_ ? system_->makeStandalone(lastFrame_) : system_->makeGroup(lastFrame_);
  if (frameWasSet_)
    group->setFrame(lastFrame_);
  if (isMaximized_)
    group->maximize();
  group->append(*this);
  return group;
}

void TabWindow::addTabbedWindow(std::shared_ptr<Window> window) {
  const auto other = std::dynamic_pointer_cast<TabWindow>(window);
  if (state_ != State::open || !other || other.get() == this || other->state_ != State::open)
    return;
  if (!standalone_ && !other->standalone_ && !isDragged_ && !other->isDragged_)
    ensureGroup()->insertBehind(*this, *other);
  else
    other->showUnfocused();
}

std::shared_ptr<WindowGroup> TabWindow::tabGroup() const {
  auto group = group_.lock();
  return group && !isDragged_ && group->size() > 1 ? group : nullptr;
}

void TabWindow::selectNextTab() {
  if (const auto group = group_.lock())
    group->selectNeighbour(1);
}

void TabWindow::selectPreviousTab() {
  if (const auto group = group_.lock())
    group->selectNeighbour(-1);
}

void TabWindow::present() {
  if (state_ != State::open || isDragged_)
    return;
  comeBack();
  const auto group = ensureGroup();
  group->select(*this);
  group->present();
}

void TabWindow::showUnfocused() {
  if (state_ != State::open || isDragged_)
    return;
  comeBack();
  const auto group = ensureGroup();
  group->select(*this);
  group->showWithoutFocus();
}

void TabWindow::withdraw() {
  if (state_ != State::open || isOrderedOut_)
    return;
  const auto group = ensureGroup();
  isOrderedOut_ = true;
  if (group->size() == 1) {
    group->hide();
    return;
  }
  formerGroup_ = group;
  formerPosition_ = adw_tab_view_get_page_position(group->tabView(), page());
  // A top-level of its own that isn't shown: the page keeps a root and a size.
  system_->makeGroup(group->frame())->insert(*this, 0);
}

void TabWindow::comeBack() {
  if (!std::exchange(isOrderedOut_, false))
    return;
  const auto former = std::exchange(formerGroup_, {}).lock();
  if (former && former->size() > 0)
    former->insert(*this, std::min(formerPosition_, former->size()));
}

bool TabWindow::isVisible() const {
  const auto group = group_.lock();
  return group && group->isOnScreen() && group->selectedWindow().get() == this;
}

bool TabWindow::isMinimized() const {
  const auto group = group_.lock();
  return group && group->isMinimized();
}

void TabWindow::unminimize() {
  if (const auto group = group_.lock(); group && group->isMinimized())
    gtk_window_unminimize(group->gtkWindow());
}

void TabWindow::requestClose() {
  if (state_ == State::open)
    system_->closeAsking({shared_from_this()});
}

bool TabWindow::beginAsking() {
  return state_ == State::open && !std::exchange(asking_, true);
}

void TabWindow::close() {
  if (state_ != State::open)
    return;
  if (isDragged_) {
    closesOnceDropped_ = true;
    return;
  }
  closesUnasked_ = true;
  const auto self = shared_from_this();
  if (const auto group = group_.lock()) {
    group->closePage(*this); // comes back to beginClose() and didDetach()
    return;
  }
  beginClose();
  finishClose();
}

void TabWindow::didAttach(std::shared_ptr<TabGroupWindow> group, AdwTabPage* page) {
  isDragged_ = false;
  group_ = group;
  page_ = glib::share(page);
  g_object_set_data(G_OBJECT(page), pageKey, this);
  adw_tab_page_set_title(page, title_.c_str());
  adw_tab_page_set_loading(page, busy_);
  if (std::exchange(closesOnceDropped_, false))
    async::EventLoop::current().post([weak = weak_from_this()] {
      if (const auto self = weak.lock())
        self->close();
    });
}

void TabWindow::didDetach() {
  // Into another group at once, or when the user lets go of it.
  if (state_ == State::open) {
    lastFrame_ = frame();
    isDragged_ = true;
  } else {
    finishClose();
  }
}

void TabWindow::beginClose() {
  if (state_ != State::open)
    return;
  lastFrame_ = frame();
  isMaximized_ = isMaximized();
  state_ = State::closing;
  system_->willClose(shared_from_this());
}

void TabWindow::finishClose() {
  const auto self = shared_from_this();
  letGo();
  std::exchange(system_, nullptr)->didClose(*this);
}

void TabWindow::abandon() {
  lastFrame_ = frame();
  letGo();
  system_ = nullptr;
}

void TabWindow::letGo() {
  state_ = State::closed;
  if (page_)
    g_object_set_data(G_OBJECT(page_.get()), pageKey, nullptr);
  page_ = nullptr;
  group_.reset();
  adw_bin_set_child(ADW_BIN(container_.get()), nullptr);
}

GtkWindow* topLevelOf(const std::shared_ptr<Window>& window) {
  const auto tab = std::dynamic_pointer_cast<TabWindow>(window);
  const auto group = tab ? tab->group() : nullptr;
  return group ? group->gtkWindow() : nullptr;
}

} // namespace ondrel::platform::windows
