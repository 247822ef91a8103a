#pragma once

#include "platform/Application.h"
#include "platform/linux/desktop/ActivationToken.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/windows/ActivityTracker.h"
#include "platform/linux/windows/WindowSystem.h"

#include <adwaita.h>

#include <deque>

namespace ondrel::platform::windows {

// The application on the desktop: one instance for each session, which later starts hand their URLs to over
// the session bus. Without a session bus it is a lone instance. Closing the last window doesn't end it;
// SIGTERM, SIGINT and SIGHUP do, in order. Needs an event loop on GLib's main context that outlives it.
class LinuxApplication final : public Application {
 public:
  struct Options {
    std::string applicationId; // a D-Bus name; windows and desktop file go by it too
    std::string displayName;
    std::string iconName = {};       // for panels that take a window's own
    bool startedByBus = false;       // as a D-Bus service: what it is for comes as a message
    bool startsInBackground = false; // no window is wanted yet, nor one of an earlier instance
  };

  explicit LinuxApplication(Options options);
  ~LinuxApplication() override;

  // The exit status of a start that only handed its URLs to the first instance, or brought that one to the
  // front; absent where there is none.
  static std::optional<int> handOver(const std::string& applicationId, const std::vector<std::string>& urls);
  // Runs until quit() and gives the exit status of the program. The first instance calls `startup` once
  // GTK is ready, then emits didFinishLaunching, then urlReceived for each URL. A later one hands the URLs
  // over, or asks the first to come to the front when there are none, and returns at once. The URLs may be of
  // any bytes: what isn't UTF-8 is logged and dropped. Call it once.
  int run(std::vector<std::string> urls, std::function<void()> startup);

  std::shared_ptr<Window> makeWindow(const WindowAttributes& attributes) override;
  void setChromeFactory(GroupChromeFactory factory) override;
  void setCloseQuestion(CloseQuestion question) override;
  std::vector<std::shared_ptr<Window>> windows() const override;
  std::vector<std::shared_ptr<Window>> orderedWindows() const override;
  std::shared_ptr<Window> focusedWindow() const override;
  std::shared_ptr<Window> frontWindow() const override;

  void activate() override;
  bool isActive() const override { return activity_.isActive(); }
  void hide() override;
  // Also whenever a window is ordered to the front.
  void unhide() override;
  bool isHidden() const override;
  void quit() override;
  std::optional<std::string> frontmostApplicationIdentifier() const override;
  base::Subscription addKeyDownMonitor(KeyMonitor monitor) override;

  // From the part of the desktop that the user has just clicked: the next activation brings a window to the
  // front with it.
  void setActivationToken(std::string token) { activationToken_.set(std::move(token)); }

  // A panel of the program's own is open, for as long as this is held: whatever gets the keyboard, the
  // program stays active.
  base::Subscription keepActive() { return activity_.hold(); }

  // The program's menu opens in the desktop's panel, which takes the keyboard for as long as a user chooses.
  void panelMenuOpens() { activity_.lendKeyboard(std::chrono::seconds(5)); }

  // After run(): links for a program that is to be started now. They came while this one was ending, or the
  // one that was running ended over them.
  const std::vector<std::string>& leftOver() const { return leftOver_; }

  // For actions, accelerators and dialogs in ui/. Borrowed.
  GtkApplication* native() const { return GTK_APPLICATION(application_.get()); }

 private:
  std::optional<int> leaveItToFirst(const std::vector<std::string>& urls) const;
  void connectSignals();
  void start();
  void receive(std::string url);
  void deliver();
  void reopen();
  void tellTermination();

  const Options options_;
  glib::Ref<AdwApplication> application_;
  std::function<void()> startup_;
  bool isLaunching_ = true;
  bool isOwnActivation_; // the one that GLib emits at the start is still to come
  bool willTerminateTold_ = false;
  bool terminating_ = false;
  std::deque<std::string> urls_; // not delivered yet
  std::vector<std::string> leftOver_;
  desktop::ActivationToken activationToken_;
  ActivityTracker activity_;
  std::unique_ptr<WindowSystem> windowSystem_; // from startup on
  std::vector<glib::Connection> connections_;
  std::vector<guint> signalSources_;
};

} // namespace ondrel::platform::windows
