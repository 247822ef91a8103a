#include "platform/linux/windows/LinuxApplication.h"

#include "base/Log.h"
#include "base/Text.h"
#include "platform/linux/desktop/AccessibilityBus.h"
#include "platform/linux/desktop/RunningInstance.h"
#include "platform/linux/desktop/UrlFiles.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/windows/TabWindow.h"
#include "platform/linux/windows/X11Windows.h"

#include <glib-unix.h>

#include <cassert>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace ondrel::platform::windows {

namespace {

constexpr base::Logger logger("system");
constexpr base::Logger networkLogger("network");

constexpr std::size_t longestLoggedUrl = 200; // characters

GApplicationFlags flags(bool startedByBus) {
  return static_cast<GApplicationFlags>(G_APPLICATION_HANDLES_OPEN |
                                        (startedByBus ? G_APPLICATION_IS_SERVICE : 0));
}

std::vector<std::string> passable(std::vector<std::string> urls) {
  std::erase_if(urls, [](const std::string& url) {
    const bool bad = url.empty() || !base::isValidUtf8(url);
    if (bad)
      networkLogger.error("Unexpected URL: {}", text::boundedUtf8(base::displayLine(url), longestLoggedUrl));
    return bad;
  });
  return urls;
}

} // namespace

LinuxApplication::LinuxApplication(Options options)
    : options_(std::move(options)), application_(glib::adopt(ADW_APPLICATION(adw_application_new(
                                        options_.applicationId.c_str(), flags(options_.startedByBus))))),
      isOwnActivation_(!options_.startedByBus), activity_({.activated = [this] { activated.emit(); },
                                                           .deactivating = [this] { deactivating.emit(); },
                                                           .deactivated =
                                                               [this] {
                                                                 if (windowSystem_)
                                                                   windowSystem_->forgetKey();
                                                                 deactivated.emit();
                                                               },
                                                           .isStillInFront = x11::isOwnWindowActive}) {
  const char* presentName = g_get_application_name();
  if (!presentName || options_.displayName != presentName)
    g_set_application_name(options_.displayName.c_str());
  desktop::keepUrlTexts();
  connectSignals();
}

LinuxApplication::~LinuxApplication() {
  for (const auto source : signalSources_)
    g_source_remove(source);
  connections_.clear();
}

void LinuxApplication::connectSignals() {
  auto* app = G_APPLICATION(application_.get());
  connections_.push_back(
      glib::connect<void(GApplication*)>(app, "startup", [this](GApplication*) { start(); }));
  connections_.push_back(
      glib::connect<void(GApplication*)>(app, "activate", [this](GApplication*) { reopen(); }));
  connections_.push_back(glib::connect<void(GApplication*, GFile**, int, const char*)>(
      app, "open", [this](GApplication*, GFile** files, int count, const char*) {
        for (int i = 0; i < count; ++i)
          receive(glib::CString(g_file_get_uri(files[i])).get());
      }));
  // The desktop may end the program without asking us.
  connections_.push_back(
      glib::connect<void(GApplication*)>(app, "shutdown", [this](GApplication*) { tellTermination(); }));
}

std::optional<int> LinuxApplication::handOver(const std::string& applicationId,
                                              const std::vector<std::string>& urls) {
  return desktop::RunningInstance(applicationId).open(passable(urls));
}

std::optional<int> LinuxApplication::leaveItToFirst(const std::vector<std::string>& urls) const {
  const desktop::RunningInstance first(options_.applicationId);
  if (options_.startsInBackground && urls.empty())
    return first.isThere() ? std::optional(EXIT_SUCCESS) : std::nullopt;
  return first.open(urls);
}

int LinuxApplication::run(std::vector<std::string> urls, std::function<void()> startup) {
  startup_ = std::move(startup);
  urls = passable(std::move(urls));
  if (const auto status = leaveItToFirst(urls))
    return *status;

  // GIO sets the folders of MIME types at the first question for a description, and loses what it has read by
  // then.
  g_content_type_set_mime_dirs(nullptr);

  const bool hasBus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)).get() != nullptr;
  if (!hasBus) {
    logger.notice("No session bus: this is a lone instance, and the desktop can't hand it links");
    // With an address that leads nowhere the engine's sandbox still sets up a proxy for it, and as root
    // leaves a file in "/" by which other programs take the machine for the inside of a sandbox.
    g_unsetenv("DBUS_SESSION_BUS_ADDRESS");
  }
  desktop::checkAccessibilityBus();
  // GTK would end the process by itself.
  if (!gtk_init_check()) {
    logger.error("There is no display to show windows on");
    return 1;
  }
  x11::outliveErrors();
  x11::setProgramClass(options_.applicationId);
  if (!options_.iconName.empty())
    gtk_window_set_default_icon_name(options_.iconName.c_str());
  urls_.assign(urls.begin(), urls.end());

  auto* app = G_APPLICATION(application_.get());
  glib::Error error;
  if (!g_application_register(app, nullptr, error.out())) {
    // One that was faster since we looked may be too busy with its own start for GLib's question.
    logger.error("The session bus refuses the program: {}", error.message());
    return leaveItToFirst(urls).value_or(EXIT_FAILURE);
  }
  if (g_application_get_is_remote(app)) { // another one was faster
    g_object_ref(app);                    // GLib warns of the end of one that was never run
    const auto status = leaveItToFirst(urls);
    if (!status)
      leftOver_ = std::move(urls);
    return status.value_or(EXIT_FAILURE);
  }
  const int status = g_application_run(app, 0, nullptr);
  tellTermination();
  if (!isLaunching_)
    leftOver_.assign(urls_.begin(), urls_.end());
  return status;
}

void LinuxApplication::start() {
  auto* app = G_APPLICATION(application_.get());
  g_application_hold(app);
  for (const int number : {SIGTERM, SIGINT, SIGHUP})
    signalSources_.push_back(g_unix_signal_add(
        number,
        [](gpointer self) -> gboolean {
          static_cast<LinuxApplication*>(self)->quit();
          return G_SOURCE_CONTINUE;
        },
        this));

  windowSystem_ = std::make_unique<WindowSystem>(*this, native(), [this] {
    activity_.update(windowSystem_ && windowSystem_->hasKeyboard() && !isHidden());
  });
  if (startup_)
    std::exchange(startup_, nullptr)();
  didFinishLaunching.emit();
  // With a later turn: what was started now (restoring windows, say) goes first.
  async::EventLoop::current().post([this] { deliver(); });
}

void LinuxApplication::receive(std::string url) {
  urls_.push_back(std::move(url));
  if (!isLaunching_)
    deliver();
}

void LinuxApplication::deliver() {
  isLaunching_ = false;
  while (!urls_.empty() && !terminating_) {
    const auto url = std::move(urls_.front());
    urls_.pop_front();
    urlReceived.emit(url);
  }
}

void LinuxApplication::reopen() {
  if (std::exchange(isOwnActivation_, false) || terminating_)
    return;
  if (isLaunching_ && !options_.startsInBackground && !options_.startedByBus)
    return; // the launch shows windows anyway
  windowSystem_->unhide();
  const bool visible = windowSystem_->anyVisible();
  if (visible)
    windowSystem_->bringToFront();
  reopenRequested.emit(visible);
}

void LinuxApplication::tellTermination() {
  if (windowSystem_ && !std::exchange(willTerminateTold_, true))
    aboutToQuit.emit();
}

void LinuxApplication::quit() {
  if (std::exchange(terminating_, true))
    return;
  tellTermination();
  // With a later turn: the startup callback may call this too, when there is nothing yet to quit.
  async::EventLoop::current().post([app = application_] { g_application_quit(G_APPLICATION(app.get())); });
}

std::shared_ptr<Window> LinuxApplication::makeWindow(const WindowAttributes& attributes) {
  assert(windowSystem_ && "windows can be made from the startup callback on");
  return windowSystem_->makeWindow(attributes);
}

void LinuxApplication::setChromeFactory(GroupChromeFactory factory) {
  assert(windowSystem_ && "the chrome can be set from the startup callback on");
  windowSystem_->setChromeFactory(std::move(factory));
}

void LinuxApplication::setCloseQuestion(CloseQuestion question) {
  assert(windowSystem_ && "the question can be set from the startup callback on");
  windowSystem_->setCloseQuestion(std::move(question));
}

std::vector<std::shared_ptr<Window>> LinuxApplication::windows() const {
  return windowSystem_ ? windowSystem_->windows() : std::vector<std::shared_ptr<Window>>();
}

std::vector<std::shared_ptr<Window>> LinuxApplication::orderedWindows() const {
  return windowSystem_ ? windowSystem_->orderedWindows() : std::vector<std::shared_ptr<Window>>();
}

std::shared_ptr<Window> LinuxApplication::focusedWindow() const {
  return windowSystem_ ? windowSystem_->focusedWindow() : nullptr;
}

std::shared_ptr<Window> LinuxApplication::frontWindow() const {
  return windowSystem_ ? windowSystem_->frontWindow() : nullptr;
}

void LinuxApplication::activate() {
  if (!windowSystem_)
    return;
  if (const auto token = activationToken_.take())
    desktop::useActivationToken(*token);
  windowSystem_->unhide();
  windowSystem_->bringToFront();
}

void LinuxApplication::hide() {
  if (!windowSystem_)
    return;
  windowSystem_->hide();
  activity_.leave();
}

void LinuxApplication::unhide() {
  if (windowSystem_)
    windowSystem_->unhide();
}

bool LinuxApplication::isHidden() const {
  return windowSystem_ && windowSystem_->isHidden();
}

std::optional<std::string> LinuxApplication::frontmostApplicationIdentifier() const {
  return x11::activeApplicationId();
}

base::Subscription LinuxApplication::addKeyDownMonitor(KeyMonitor monitor) {
  assert(windowSystem_ && "keys can be monitored from the startup callback on");
  return windowSystem_->addKeyDownMonitor(std::move(monitor));
}

} // namespace ondrel::platform::windows
