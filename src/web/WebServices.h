#pragma once

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class Application;
class Panels;
class WebViewFactory;
class Workspace;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {

class HighlightReceiver;
class MessageFiles;
class PageScripts;

// What every tab stands on. Made once; outlives all tabs.
struct WebServices {
  settings::AppSettings& settings;
  const PageScripts& scripts;
  platform::Application& application;
  platform::WebViewFactory& webViews;
  platform::Panels& panels;
  platform::Workspace& workspace;
  jmap::NotificationManager& notifications;
  MessageFiles& messageFiles;
  // Filled while there is one; without it what pages report of highlights is dropped.
  HighlightReceiver* highlights = nullptr;
};

} // namespace ondrel::web
