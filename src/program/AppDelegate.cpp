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
constexpr std::size_t longestLogged = 200;

std::string excerpt(const std::string& text) {
  return base::displayLine(text.substr(0, longestLogged));
}

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
  // A Message-ID may hold what no URL may, and stands in its link as it is.
  if (text.starts_with(emailPrefix)) {
    if (base::displayLine(text) != text) {
      refuse(text);
      return;
    }
    logger_.debug("URL event with scheme email");
    auto link = text.substr(emailPrefix.size());
    if (!link.empty() && receivers_.openEmailLink)
      scope_.spawn(onNextTurn([this, link = std::move(link)] { receivers_.openEmailLink(link); }));
    return;
  }
  const bool isMailto = text.starts_with("mailto:");
  const auto url = base::Url::parse(isMailto ? base::withEncodedDelimiters(text) : text);
  if (!url) {
    refuse(text);
    return;
  }
  if (!isMailto) {
    logger_.notice("Ignored a URL event with scheme {}", excerpt(url->scheme().value_or("(none)")));
    return;
  }
  logger_.debug("URL event with scheme mailto");
  if (receivers_.handleMailto)
    scope_.spawn(onNextTurn([this, url] { receivers_.handleMailto(*url); }));
}

void AppDelegate::refuse(const std::string& text) {
  logger_.error("Unexpected URL: {}", excerpt(text));
}

} // namespace ondrel::program
