#pragma once

#include "async/Scope.h"
#include "platform/Application.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::support {

class FakeApplication;

// The tabs of one top-level, in order.
struct FakeGroup final : platform::WindowGroup {
  std::vector<std::weak_ptr<platform::Window>> members;
  std::weak_ptr<platform::Window> selected;

  std::vector<std::shared_ptr<platform::Window>> windows() const override {
    std::vector<std::shared_ptr<platform::Window>> result;
    for (const auto& member : members)
      if (auto window = member.lock())
        result.push_back(std::move(window));
    return result;
  }
  std::shared_ptr<platform::Window> selectedWindow() const override { return selected.lock(); }
};

class FakeWindow final : public platform::Window, public std::enable_shared_from_this<FakeWindow> {
 public:
  FakeWindow(FakeApplication& application, const platform::WindowAttributes& attributes)
      : attributes(attributes), application_(application),
        frame_{100, 50, attributes.contentWidth, attributes.contentHeight} {}

  std::string identifier() const override { return attributes.identifier; }
  void setTitle(const std::string& text) override { title = text; }
  void setBusy(bool value) override { busy = value; }
  void setContent(platform::NativeView view) override { content = view; }
  platform::Rect frame() const override { return frame_; }
  void setFrame(const platform::Rect& frame) override {
    frame_ = frame;
    calls.push_back("setFrame");
  }
  bool isMaximized() const override { return maximized; }
  void maximize() override { maximized = true; }
  platform::TabbingMode tabbingMode() const override { return mode_; }
  void setTabbingMode(platform::TabbingMode mode) override {
    mode_ = mode;
    calls.push_back("mode " + std::to_string(static_cast<int>(mode)));
  }
  std::string tabbingIdentifier() const override { return attributes.tabbingIdentifier; }
  void setTabbingIdentifier(const std::string& identifier) override {
    attributes.tabbingIdentifier = identifier;
  }
  void addTabbedWindow(std::shared_ptr<platform::Window> window) override;
  std::shared_ptr<platform::WindowGroup> tabGroup() const override {
    return group && group->windows().size() > 1 ? group : nullptr;
  }
  void selectNextTab() override { calls.push_back("next"); }
  void selectPreviousTab() override { calls.push_back("previous"); }
  void present() override;
  void showUnfocused() override {
    comeBack();
    visible = true;
    calls.push_back("front");
  }
  void withdraw() override;
  bool isWithdrawn() const override { return withdrawn; }
  bool isVisible() const override { return visible; }
  bool isMinimized() const override { return false; }
  void unminimize() override { calls.push_back("unminimize"); }
  void requestClose() override;
  void close() override;

  platform::WindowAttributes attributes;
  std::shared_ptr<FakeGroup> group = std::make_shared<FakeGroup>();
  platform::NativeView content;
  std::string title;
  bool busy = false;
  bool visible = false;
  bool withdrawn = false;
  bool maximized = false;
  bool closed = false;
  std::vector<std::string> calls;

 private:
  void leaveGroup() {
    std::erase_if(group->members, [this](const auto& each) { return each.lock().get() == this; });
  }
  void comeBack();

  FakeApplication& application_;
  std::shared_ptr<FakeGroup> formerGroup_;
  platform::Rect frame_;
  platform::TabbingMode mode_ = platform::TabbingMode::automatic;
};

class FakeApplication final : public platform::Application {
 public:
  std::shared_ptr<platform::Window> makeWindow(const platform::WindowAttributes& attributes) override {
    auto window = std::make_shared<FakeWindow>(*this, attributes);
    window->group->members.push_back(window);
    all.push_back(window);
    return window;
  }
  void setChromeFactory(platform::GroupChromeFactory) override {}
  void setCloseQuestion(CloseQuestion question) override { closeQuestion = std::move(question); }
  std::vector<std::shared_ptr<platform::Window>> windows() const override { return {all.begin(), all.end()}; }
  std::vector<std::shared_ptr<platform::Window>> orderedWindows() const override { return windows(); }
  std::shared_ptr<platform::Window> focusedWindow() const override { return key; }
  std::shared_ptr<platform::Window> frontWindow() const override { return key ? key : main; }
  void activate() override { ++activations; }
  bool isActive() const override { return key != nullptr; }
  void hide() override { hidden = true; }
  void unhide() override { hidden = false; }
  bool isHidden() const override { return hidden; }
  void quit() override { aboutToQuit.emit(); }
  std::optional<std::string> frontmostApplicationIdentifier() const override { return frontmost; }
  base::Subscription addKeyDownMonitor(KeyMonitor monitor) override {
    keyMonitor = std::move(monitor);
    return base::Subscription([this] { keyMonitor = nullptr; });
  }

  void setKey(const std::shared_ptr<platform::Window>& window) {
    key = window;
    if (window)
      windowFocused.emit(window);
  }
  std::shared_ptr<FakeWindow> last() const { return all.empty() ? nullptr : all.back(); }

  std::vector<std::shared_ptr<FakeWindow>> all;
  std::shared_ptr<platform::Window> key;
  std::shared_ptr<platform::Window> main;
  std::optional<std::string> frontmost;
  CloseQuestion closeQuestion;
  KeyMonitor keyMonitor;
  int activations = 0;
  bool hidden = false;
  async::Scope scope;
};

inline void FakeWindow::addTabbedWindow(std::shared_ptr<platform::Window> window) {
  const auto added = std::static_pointer_cast<FakeWindow>(window);
  std::erase_if(added->group->members, [&window](const auto& each) { return each.lock() == window; });
  const auto own =
      std::ranges::find_if(group->members, [this](const auto& each) { return each.lock().get() == this; });
  group->members.insert(own + 1, added);
  added->group = group;
  added->visible = true;
}

inline void FakeWindow::withdraw() {
  if (std::exchange(withdrawn, true))
    return;
  visible = false;
  calls.push_back("out");
  leaveGroup();
  formerGroup_ = std::exchange(group, std::make_shared<FakeGroup>());
  group->members.push_back(weak_from_this());
  if (application_.key.get() == this)
    application_.key = nullptr;
}

inline void FakeWindow::comeBack() {
  if (!std::exchange(withdrawn, false))
    return;
  group = std::move(formerGroup_);
  group->members.push_back(weak_from_this());
}

inline void FakeWindow::present() {
  comeBack();
  visible = true;
  group->selected = weak_from_this();
  calls.push_back("key");
  application_.setKey(shared_from_this());
}

inline void FakeWindow::requestClose() {
  const auto ask = [](FakeApplication& application, std::shared_ptr<FakeWindow> window) -> async::Task<void> {
    std::vector<std::shared_ptr<platform::Window>> asked{window};
    const bool mayClose = co_await application.closeQuestion(std::move(asked));
    if (mayClose)
      window->close();
  };
  if (application_.closeQuestion)
    application_.scope.spawn(ask(application_, shared_from_this()));
  else
    close();
}

inline void FakeWindow::close() {
  if (std::exchange(closed, true))
    return;
  const auto self = shared_from_this();
  application_.windowWillClose.emit(self);
  leaveGroup();
  group = std::make_shared<FakeGroup>();
  std::erase(application_.all, self);
  visible = false;
  if (application_.key.get() == this)
    application_.key = nullptr;
}

} // namespace ondrel::support
