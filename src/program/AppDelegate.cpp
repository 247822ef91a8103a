#include "program/AppDelegate.h"

#include "app/WindowManager.h"
#include "base/Text.h"
#include "platform/Application.h"
#include "program/AppLifecycleService.h"
#include "program/Migration.h"

namespace ondrel::program {

namespace {

constexpr std::string_view hookmarkIdentifier = "com.cogsciapps.hook";
constexpr std::string_view emailPrefix = "email://";
constexpr std::size_t longestLoggedURL = 200;

async::Task<void> onNextTurn(std::function<void()> work) {
  work();
  co_return;
}

} // namespace

AppDelegate::AppDelegate(platform::Application& application, platform::ProgramInfo programInfo,
                         platform::UserDefaults& defaults, platform::Directories& directories,
                         platform::FileStore& files, AppLifecycleService& lifecycle)
    : application_(application), programInfo_(std::move(programInfo)), defaults_(defaults),
      directories_(directories), files_(files), lifecycle_(lifecycle) {
  subscriptions_.push_back(
      application_.didFinishLaunching.subscribe([this] { applicationDidFinishLaunching(); }));
  subscriptions_.push_back(application_.reopenRequested.subscribe(
      [this](bool hasVisibleWindows) { applicationShouldHandleReopen(hasVisibleWindows); }));
  subscriptions_.push_back(application_.deactivating.subscribe([this] { applicationWillResignActive(); }));
}

void AppDelegate::applicationDidFinishLaunching() {
  migrate(programInfo_, defaults_, directories_, files_);
  urlSubscription_ =
      application_.urlReceived.subscribe([this](const std::string& text) { handleGetURL(text); });
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows) {
  if (!hasVisibleWindows && windowManager_)
    scope_.spawn(onNextTurn([this] { windowManager_->reopenWindow(); }));
  return false;
}

void AppDelegate::applicationWillResignActive() {
  if (const auto front = application_.frontmostApplicationIdentifier())
    lifecycle_.isHookmarkActive = *front == hookmarkIdentifier;
}

void AppDelegate::handleGetURL(const std::string& text) {
  const auto url = base::Url::parse(text);
  if (!url) {
    logger_.error("Unexpected URL: {}", base::displayLine(text.substr(0, longestLoggedURL)));
    return;
  }
  if (!url->scheme())
    return;
  logger_.debug("URL event with scheme {}", *url->scheme());
  if (*url->scheme() == "email") {
    const auto rest = text.size() > emailPrefix.size() ? text.substr(emailPrefix.size()) : std::string();
    if (!rest.empty() && receivers_.openEmailLink)
      scope_.spawn(onNextTurn([this, rest] { receivers_.openEmailLink(rest); }));
  } else if (*url->scheme() == "mailto") {
    if (receivers_.handleMailto)
      scope_.spawn(onNextTurn([this, url] { receivers_.handleMailto(*url); }));
  }
}

} // namespace ondrel::program
