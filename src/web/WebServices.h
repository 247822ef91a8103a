#pragma once

#include "async/Task.h"
#include "web/ScriptMessageRouter.h"

#include <functional>
#include <memory>
#include <string>

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class Application;
class Panels;
class WebViewFactory;
class UriLauncher;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {

class DownloadNotices;
class MessageFiles;
class PageScripts;
class RunningDownloads;
class WindowViewModel;

// What every tab stands on. Made once; outlives all tabs.
struct WebServices {
  settings::AppSettings& settings;
  const PageScripts& scripts;
  platform::Application& application;
  platform::WebViewFactory& webViews;
  platform::Panels& panels;
  platform::UriLauncher& uriLauncher;
  jmap::NotificationManager& notifications;
  MessageFiles& messageFiles;
  DownloadNotices& downloadNotices;
  RunningDownloads& runningDownloads;
  // What features take of the pages' messages.
  ScriptMessageRouter messages{};
  // Begins the letter of a "mailto" link here; false where the user has another program for that.
  std::function<bool(const std::string& url)> beginLetter{};
  // Highlights what is selected in a tab's page.
  std::function<void(const std::shared_ptr<WindowViewModel>& tab)> highlightSelection{};
  // What is to be done with a tab's page that has loaded just now; cancelled when the page goes.
  std::function<async::Task<void>(const std::shared_ptr<WindowViewModel>& tab)> addToPage{};
};

} // namespace ondrel::web
