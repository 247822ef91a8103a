#pragma once

#include "app/BrowserContent.h"
#include "app/ClosedTabs.h"
#include "app/SessionStore.h"
#include "app/WindowManager.h"
#include "async/VirtualEventLoop.h"
#include "jmap/newmail/NotificationManager.h"
#include "settings/AppSettings.h"
#include "support/FakeApplication.h"
#include "support/FakeDesktop.h"
#include "support/FakeHttpClient.h"
#include "support/FakeNewFiles.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeWebView.h"
#include "support/LogCapture.h"
#include "support/TestSite.h"
#include "web/DownloadNotices.h"
#include "web/MessageFiles.h"
#include "web/RunningDownloads.h"
#include "web/WebServices.h"
#include "web/WebView.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <memory>
#include <optional>
#include <string>

namespace ondrel::support {

// Every script of the lists exists and holds its own name.
inline std::optional<std::string> namedScript(std::string_view name) {
  return "/* " + std::string(name) + " */";
}

// The program's core on fakes and in virtual time, without its windows' faces: a content is just the place of
// the web view, which appears when its window is key.
class TestShell {
 public:
  struct Content final : app::BrowserContent {
    Content(std::shared_ptr<web::WindowViewModel> viewModel, const web::WebServices& services)
        : view(std::move(viewModel), services) {}
    web::WebView view;
  };

  void start(bool inBackground = false) {
    closedTabs.emplace(files, files);
    manager = std::make_unique<app::WindowManager>(
        application, settings, sessionStore, *closedTabs, clipboard, services,
        [this](std::shared_ptr<web::WindowViewModel> viewModel, std::shared_ptr<platform::Window> window) {
          auto content = std::make_unique<Content>(std::move(viewModel), services);
          content->view.viewDidLoad();
          contents.emplace_back(window, content.get());
          return content;
        },
        inBackground);
    loop.runUntilIdle();
    showFocusedWindow();
  }

  // As the interface does for the tab in front.
  void showFocusedWindow() {
    for (const auto& [window, content] : contents)
      if (const auto live = window.lock(); live && live == application.key)
        content->view.viewDidAppear();
  }

  std::shared_ptr<FakeWebView> webView(const std::shared_ptr<web::WindowViewModel>& viewModel) {
    return std::static_pointer_cast<FakeWebView>(viewModel->liveWebView());
  }
  std::shared_ptr<web::WindowViewModel> focusedModel() { return manager->windows().focusedViewModel(); }
  void settle() { loop.runUntilIdle(); }

  LogCapture log;
  async::VirtualEventLoop loop;
  FakeApplication application;
  FakeDefaults defaults;
  FakeFiles files;
  FakePanels panels;
  FakeUriLauncher uriLauncher;
  FakeClipboard clipboard;
  FakeWebViewFactory webViews;
  web::PageScripts scripts{namedScript};
  settings::AppSettings settings{defaults, testSite()};
  FakeNotificationCenter notificationCenter;
  jmap::NotificationManager notifications{notificationCenter};
  FakeHttpClient http;
  FakeNewFiles newFiles{files};
  web::MessageFiles messageFiles{http, newFiles, files, notifications};
  web::RunningDownloads runningDownloads;
  web::DownloadNotices downloadNotices{notifications, application, uriLauncher};
  web::WebServices services{settings,    scripts,       application,  webViews,        panels,
                            uriLauncher, notifications, messageFiles, downloadNotices, runningDownloads};
  app::SessionStore sessionStore{files, files};
  std::optional<app::ClosedTabs> closedTabs; // read with the start
  std::vector<std::pair<std::weak_ptr<platform::Window>, Content*>> contents;
  std::unique_ptr<app::WindowManager> manager;
};

} // namespace ondrel::support
